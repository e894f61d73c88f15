// The host's object runtime: classes looked up by name, messages sent by
// selector, and the two ways Hushwall changes a host class: replacing a
// method while keeping its previous implementation, and adding a method the
// class does not have.
//
// Every implementation, the host's own and Hushwall's replacements alike, has
// one shape: it receives the receiver, the selector and the arguments as
// values, and returns a value (nil for methods that return nothing). An
// original-implementation slot is a plain pointer of that shape, written once
// when the hook is installed.
#ifndef HUSHWALL_HOST_RUNTIME_H_
#define HUSHWALL_HOST_RUNTIME_H_

#include <cstddef>
#include <string>
#include <vector>

#include "host/value.h"

namespace hushwall::host {

using Selector = std::string;
using Args = std::vector<Value>;
using IMP = Value (*)(const Value& self, const Selector& cmd, const Args& args);

// The argument at `index`, or nil when the caller passed fewer: an argument
// left out reads as nil (or zero), as it does in a message on the device.
inline Value argumentAt(const Args& args, std::size_t index) {
  return index < args.size() ? args[index] : Value();
}

class Runtime {
 public:
  virtual ~Runtime() = default;

  // objc_getClass: the class object, or nil when the host has no such class.
  virtual Value getClass(const std::string& name) = 0;
  // object_getClass of a class: its meta-class, which holds class methods.
  // nil for nil.
  virtual Value getMetaClass(const Value& cls) = 0;

  // MSHookMessageEx: makes `replacement` the implementation of `selector` on
  // `cls` and stores the previous one in *slot. A nil class, or a selector
  // the class does not answer, changes nothing and leaves *slot as it was.
  virtual void hookMessage(const Value& cls, const Selector& selector, IMP replacement,
                           IMP* slot) = 0;
  // class_addMethod: gives `cls` a method with the type encoding `types`.
  // Returns false, and changes nothing, for a nil class or a class that
  // already has the selector itself.
  virtual bool addMethod(const Value& cls, const Selector& selector, IMP imp,
                         const char* types) = 0;

  // objc_msgSend. A message to nil returns nil. A selector nobody answers
  // raises the host's unrecognised-selector failure.
  virtual Value send(const Value& receiver, const Selector& selector, const Args& args) = 0;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_RUNTIME_H_
