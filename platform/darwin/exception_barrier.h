// Where the adapter's code is entered from the host (a hook's trampoline, a
// notification callback, the alert's delegate, the load-time start-up),
// nothing may leave it as an exception: one that unwinds through
// SpringBoard's or WhatsApp's own frames takes the whole process down, and
// a settings screen that never opens is a far smaller loss than a home
// screen in a crash loop.
#ifndef HUSHWALL_PLATFORM_DARWIN_EXCEPTION_BARRIER_H_
#define HUSHWALL_PLATFORM_DARWIN_EXCEPTION_BARRIER_H_

#import <Foundation/Foundation.h>

#include <type_traits>

namespace hushwall::darwin {

// Calls call(context) under a C++ catch-all; true when anything was thrown.
// It lives in a C++ file of its own (exception_barrier.cpp): with the GNU
// Objective-C runtime that the Linux tests use, a catch clause in an
// Objective-C++ function is judged by the Objective-C personality, which
// cannot match C++ exceptions.
bool calledWithCatchAll(void (*call)(void* context), void* context);

// Runs `body`; true when it raised, an Objective-C exception or a C++ one,
// which is then gone.
template <typename Body>
bool raisedInside(Body&& body) {
  using Callable = std::remove_reference_t<Body>;
  bool raised = false;
  @try {
    raised = calledWithCatchAll([](void* b) { (*static_cast<Callable*>(b))(); },
                                const_cast<std::remove_const_t<Callable>*>(&body));
  } @catch (id exception) {
    raised = true;
  }
  return raised;
}

}  // namespace hushwall::darwin

#endif  // HUSHWALL_PLATFORM_DARWIN_EXCEPTION_BARRIER_H_
