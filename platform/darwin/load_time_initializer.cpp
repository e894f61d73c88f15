// Hushwall.dylib's entry point: the Substrate loader injects the library and
// the dynamic loader runs this once, before the host's own start-up code
// uses the classes it hooks.
//
// Plain C++ and linked last, on purpose: under the GNU Objective-C runtime
// each Objective-C file of the library registers its classes and selectors
// from an initialiser of its own, which must all have run before the
// start-up sends its first message. Initialisers run in link order, so the
// one that starts the tweak comes after every Objective-C file. (On the
// phone the runtime has done all of that before any initialiser runs.)
#include "platform/darwin/device_start_up.h"

__attribute__((constructor)) static void HushwallLoad() { hushwall::darwin::startUpOnDevice(); }
