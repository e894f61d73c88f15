// The bridge between the Objective-C calling convention and the logic's
// one shape of implementation.
//
// A replacement installed into a host class must be a function that the
// host calls as it calls the method: with the receiver, the selector and
// the method's own argument types. Each supported type encoding ("v@:@",
// "v@:@@Q", ...) has such a function, compiled for exactly those types; it
// finds the hook by its selector and the receiver's class, turns the
// arguments into values and runs the hook's replacement. The way back is
// one function for every original-implementation slot: it finds the same
// hook and calls the host's previous implementation with the arguments
// turned back into the method's types. A method whose encoding has no
// shape here is not hooked at all, rather than called with wrong types.
#ifndef HUSHWALL_PLATFORM_DARWIN_METHOD_SHAPES_H_
#define HUSHWALL_PLATFORM_DARWIN_METHOD_SHAPES_H_

#import <Foundation/Foundation.h>

#include <objc/runtime.h>

#include <string>

#include "host/runtime.h"

namespace hushwall::darwin {

struct Shape {
  const char* encoding;  // canonical: no offsets, no qualifiers
  IMP trampoline;
  host::Value (*callOriginal)(IMP original, id self, SEL selector, const host::Args& args);
};

// "@32@0:8@16Q24" -> "@@:@Q": offsets, type qualifiers and class names
// dropped, long and unsigned long written as the 64-bit types they are.
std::string canonicalEncoding(const char* types);
// The shape of a canonical encoding, or null when none is compiled in.
const Shape* shapeOf(const std::string& canonical);

// One hooked or added method of one class.
struct HookRecord {
  Class cls;
  std::string selector;
  host::IMP implementation;  // the logic's replacement or added method
  const Shape* shape;
  IMP original = nullptr;  // the host's previous implementation, if any
};

// Records a hook before it is installed; the record lives as long as the
// process. forgetHook() takes back the record just made when its
// installation failed.
HookRecord& rememberHook(Class cls, const std::string& selector, host::IMP implementation,
                         const Shape* shape);
void forgetHook(const HookRecord& record);

// Sends `selector` to `target` by calling its implementation with the
// method's own types, when the method's encoding has a shape; false (and
// nothing sent) otherwise.
bool sendWithShape(id target, SEL selector, const host::Args& args, host::Value* result);

// The uniform implementation every original-implementation slot receives.
host::Value callOriginal(const host::Value& self, const host::Selector& selector,
                         const host::Args& args);

}  // namespace hushwall::darwin

#endif  // HUSHWALL_PLATFORM_DARWIN_METHOD_SHAPES_H_
