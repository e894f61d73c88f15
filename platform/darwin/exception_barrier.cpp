// The C++ half of the exception barrier (exception_barrier.h). A catch-all
// here also stops an Objective-C exception, which the unwinder hands to it
// as a foreign one.
#include <exception>

namespace hushwall::darwin {

bool calledWithCatchAll(void (*call)(void* context), void* context) {
  try {
    call(context);
    return false;
  } catch (...) {
    return true;
  }
}

}  // namespace hushwall::darwin
