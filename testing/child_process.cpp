#include "testing/child_process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <thread>

namespace hushwall::testing {

void runInChildProcess(const std::function<void()>& body, int timeoutSeconds) {
  std::fflush(nullptr);
  pid_t pid = ::fork();
  ASSERT_GE(pid, 0) << "fork failed";
  if (pid == 0) {
    int code = 0;
    try {
      body();
      code = ::testing::Test::HasFailure() ? 1 : 0;
    } catch (const std::exception& e) {
      std::fprintf(stderr, "child process: uncaught exception: %s\n", e.what());
      code = 2;
    }
    std::fflush(nullptr);
    ::_exit(code);
  }
  int status = 0;
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
  while (::waitpid(pid, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      ::kill(pid, SIGKILL);
      ::waitpid(pid, &status, 0);
      ADD_FAILURE() << "child process did not finish within " << timeoutSeconds << " s";
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  if (WIFSIGNALED(status)) {
    ADD_FAILURE() << "child process died of signal " << WTERMSIG(status);
  } else {
    EXPECT_EQ(WEXITSTATUS(status), 0) << "child process failed (see its output above)";
  }
}

}  // namespace hushwall::testing
