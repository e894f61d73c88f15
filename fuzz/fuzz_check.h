// A property check inside a fuzz target: a violation prints what went wrong
// and aborts, which libFuzzer reports as a crash and keeps the input for.
#ifndef HUSHWALL_FUZZ_FUZZ_CHECK_H_
#define HUSHWALL_FUZZ_FUZZ_CHECK_H_

#include <cstdio>
#include <cstdlib>

#define HUSHWALL_FUZZ_CHECK(condition, what)                                          \
  do {                                                                                \
    if (!(condition)) {                                                               \
      std::fprintf(stderr, "fuzz check failed: %s (%s) at %s:%d\n", what, #condition, \
                   __FILE__, __LINE__);                                               \
      std::abort();                                                                   \
    }                                                                                 \
  } while (false)

#endif  // HUSHWALL_FUZZ_FUZZ_CHECK_H_
