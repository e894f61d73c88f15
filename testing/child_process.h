// Runs a test body in a child process of its own.
//
// The library's start-up runs once per process and its hooks, observers and
// flags last as long as the process, exactly as on the device; so every test
// that loads the library gets a fresh process, the way the device would
// start the app. Assertions inside the body are reported by the child's own
// test framework output; the parent sees the child's verdict.
#ifndef HUSHWALL_TESTING_CHILD_PROCESS_H_
#define HUSHWALL_TESTING_CHILD_PROCESS_H_

#include <functional>

namespace hushwall::testing {

// Forks, runs `body` in the child, and makes the current test fail when the
// child failed an assertion, crashed, or did not finish in `timeoutSeconds`.
void runInChildProcess(const std::function<void()>& body, int timeoutSeconds = 60);

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_CHILD_PROCESS_H_
