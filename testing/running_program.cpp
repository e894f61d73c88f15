#include "testing/running_program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace hushwall::testing {

using std::chrono::milliseconds;

RunningProgram::RunningProgram(std::vector<std::string> argv) {
  int out[2], err[2];
  if (::pipe(out) != 0 || ::pipe(err) != 0) throw std::runtime_error("pipe failed");
  pid_ = ::fork();
  if (pid_ == 0) {
    // Never the test's terminal: nobody is there to answer a question.
    ::dup2(::open("/dev/null", O_RDONLY), 0);
    ::dup2(out[1], 1), ::dup2(err[1], 2);
    ::close(out[0]), ::close(err[0]), ::close(out[1]), ::close(err[1]);
    std::vector<char*> args;
    for (auto& a : argv) args.push_back(a.data());
    args.push_back(nullptr);
    ::execv(args[0], args.data());
    ::_exit(127);
  }
  ::close(out[1]), ::close(err[1]);
  fds_[0] = out[0], fds_[1] = err[0];
}

RunningProgram::~RunningProgram() {
  if (pid_ > 0) ::kill(pid_, SIGKILL), ::waitpid(pid_, nullptr, 0);
  for (int fd : fds_) if (fd >= 0) ::close(fd);
}

bool RunningProgram::readUntilError(const std::string& text) {
  return pump([&] { return err.find(text) != std::string::npos; }, milliseconds(10000));
}

int RunningProgram::finish() {
  if (!pump([] { return false; }, milliseconds(20000))) ::kill(pid_, SIGKILL);
  int status = 0;
  ::waitpid(pid_, &status, 0);
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Reads output until `done` holds or both streams end (true), or time is up.
bool RunningProgram::pump(const std::function<bool()>& done, milliseconds timeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  while (!done() && (fds_[0] >= 0 || fds_[1] >= 0)) {
    auto left = std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    pollfd polls[2] = {{fds_[0], POLLIN, 0}, {fds_[1], POLLIN, 0}};
    ::poll(polls, 2, static_cast<int>(left.count()));
    for (int i = 0; i < 2; ++i) {
      if (fds_[i] < 0 || polls[i].revents == 0) continue;
      char buffer[4096];
      ssize_t n = ::read(fds_[i], buffer, sizeof buffer);
      if (n > 0) (i == 0 ? out : err).append(buffer, static_cast<std::size_t>(n));
      else ::close(fds_[i]), fds_[i] = -1;
    }
  }
  return true;
}

int runProgram(std::vector<std::string> argv, std::string* out, std::string* err) {
  RunningProgram program(std::move(argv));
  int status = program.finish();
  if (out) *out = program.out;
  if (err) *err = program.err;
  return status;
}

}  // namespace hushwall::testing
