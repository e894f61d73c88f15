// A program of this project run as a real process from a test, with its
// output read as it comes: for the command-line tools, whose exit status and
// messages are what a user sees.
#ifndef HUSHWALL_TESTING_RUNNING_PROGRAM_H_
#define HUSHWALL_TESTING_RUNNING_PROGRAM_H_

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace hushwall::testing {

class RunningProgram {
 public:
  // Starts argv[0] with these arguments, stdout and stderr on pipes.
  explicit RunningProgram(std::vector<std::string> argv);
  // Kills and reaps a program that is still running.
  ~RunningProgram();
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  // Reads until stderr holds `text` (true) or ten seconds pass.
  bool readUntilError(const std::string& text);
  // Reads everything, waits for the end (killing the program after twenty
  // seconds) and returns the exit status, -1 when it did not exit.
  int finish();

  std::string out, err;

 private:
  bool pump(const std::function<bool()>& done, std::chrono::milliseconds timeout);

  pid_t pid_ = -1;
  int fds_[2] = {-1, -1};
};

// Runs a program to its end; its exit status, and what it printed.
int runProgram(std::vector<std::string> argv, std::string* out = nullptr, std::string* err = nullptr);

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_RUNNING_PROGRAM_H_
