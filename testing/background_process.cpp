#include "testing/background_process.h"
#include "testing/child_process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <thread>

namespace hushwall::testing {

BackgroundProcess::BackgroundProcess(const std::function<void()>& body) {
  std::fflush(nullptr);
  pid_ = ::fork();
  if (pid_ < 0) throw std::runtime_error("fork failed");
  if (pid_ > 0) return;
  int code = 0;
  try {
    body();
    code = ::testing::Test::HasFailure() ? 1 : 0;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "background process: uncaught exception: %s\n", e.what());
    code = 2;
  }
  std::fflush(nullptr);
  // Not exit(): the parent's static objects (its bus, its temporary files)
  // belong to the parent.
  ::_exit(code);
}

BackgroundProcess::~BackgroundProcess() {
  if (reaped_) return;
  ::kill(pid_, SIGKILL);
  ::waitpid(pid_, &status_, 0);
}

void BackgroundProcess::kill(int signal) {
  if (!reaped_) ::kill(pid_, signal);
}

int BackgroundProcess::wait(int timeoutSeconds) {
  if (reaped_) return status_;
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
  for (;;) {
    pid_t done = ::waitpid(pid_, &status_, WNOHANG);
    if (done == pid_) break;
    if (std::chrono::steady_clock::now() > deadline) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, &status_, 0);
      reaped_ = true;
      return -1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  reaped_ = true;
  return status_;
}

void BackgroundProcess::expectSuccess(int timeoutSeconds) {
  int status = wait(timeoutSeconds);
  if (status == -1) {
    ADD_FAILURE() << "background process did not finish within " << timeoutSeconds << " s";
  } else if (WIFSIGNALED(status)) {
    ADD_FAILURE() << "background process died of signal " << WTERMSIG(status);
  } else {
    EXPECT_EQ(WEXITSTATUS(status), 0) << "background process failed (see its output above)";
  }
}

void runInChildProcess(const std::function<void()>& body, int timeoutSeconds) {
  BackgroundProcess(body).expectSuccess(timeoutSeconds);
}

}  // namespace hushwall::testing
