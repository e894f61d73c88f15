// Substrate's method hook, as the Linux stand-in of the device provides it.
#ifndef HUSHWALL_GNUSTEP_SUBSTRATE_H_
#define HUSHWALL_GNUSTEP_SUBSTRATE_H_

#include <objc/runtime.h>

#ifdef __cplusplus
extern "C" {
#endif

// Makes `hook` the implementation of `message` on `_class` and stores the
// previous one in *old (when old is not null). A method the class only
// inherits is given to the class itself, so the superclass keeps its own.
// A nil class or a selector the class does not answer changes nothing.
void MSHookMessageEx(Class _class, SEL message, IMP hook, IMP* old);

#ifdef __cplusplus
}
#endif

#endif  // HUSHWALL_GNUSTEP_SUBSTRATE_H_
