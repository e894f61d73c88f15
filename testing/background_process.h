// A test body running in a child process of its own while the test goes on:
// for tests that need two host processes at the same time, or one that is
// killed half way through its work.
#ifndef HUSHWALL_TESTING_BACKGROUND_PROCESS_H_
#define HUSHWALL_TESTING_BACKGROUND_PROCESS_H_

#include <sys/types.h>

#include <functional>

namespace hushwall::testing {

class BackgroundProcess {
 public:
  // Forks and runs `body` in the child, which exits 0 when the body returns
  // without a failed assertion, 1 after a failed one, 2 after an uncaught
  // exception.
  explicit BackgroundProcess(const std::function<void()>& body);
  // Kills and reaps a child that is still running.
  ~BackgroundProcess();
  BackgroundProcess(const BackgroundProcess&) = delete;
  BackgroundProcess& operator=(const BackgroundProcess&) = delete;

  pid_t pid() const { return pid_; }
  // Sends `signal` to the child (once it has been reaped, nothing).
  void kill(int signal);
  // Waits up to `timeoutSeconds` for the child to end and returns its wait
  // status; kills it and returns -1 when it does not end in time.
  int wait(int timeoutSeconds = 60);
  // wait() and adds a test failure unless the child exited with 0.
  void expectSuccess(int timeoutSeconds = 60);

 private:
  pid_t pid_ = -1;
  bool reaped_ = false;
  int status_ = 0;
};

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_BACKGROUND_PROCESS_H_
