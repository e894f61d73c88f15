// The host runtime over the Objective-C runtime: classes by objc_getClass,
// meta-classes by object_getClass, replacements by Substrate's
// MSHookMessageEx (found at start, optional_symbols.h), additions by
// class_addMethod, and messages by the method's implementation called with
// its own types (method_shapes.h) or by NSInvocation, typed by the
// receiver's own method signature.
#ifndef HUSHWALL_PLATFORM_DARWIN_OBJC_RUNTIME_H_
#define HUSHWALL_PLATFORM_DARWIN_OBJC_RUNTIME_H_

#include "host/runtime.h"
#include "platform/darwin/optional_symbols.h"

namespace hushwall::darwin {

class ObjcRuntime : public host::Runtime {
 public:
  // Without a hooking function (no Substrate in the process) every replace
  // does nothing and leaves its slot empty, as for a missing class.
  explicit ObjcRuntime(HookMessageFunction hookMessage) : hookMessage_(hookMessage) {}

  host::Value getClass(const std::string& name) override;
  host::Value getMetaClass(const host::Value& cls) override;
  void hookMessage(const host::Value& cls, const host::Selector& selector, host::IMP replacement,
                   host::IMP* slot) override;
  bool addMethod(const host::Value& cls, const host::Selector& selector, host::IMP imp,
                 const char* types) override;
  host::Value send(const host::Value& receiver, const host::Selector& selector,
                   const host::Args& args) override;

 private:
  HookMessageFunction hookMessage_;
};

}  // namespace hushwall::darwin

#endif  // HUSHWALL_PLATFORM_DARWIN_OBJC_RUNTIME_H_
