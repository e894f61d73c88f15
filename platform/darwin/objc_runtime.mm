#include "platform/darwin/objc_runtime.h"

#import <Foundation/Foundation.h>

#include <objc/runtime.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/darwin/method_shapes.h"
#include "platform/darwin/objc_values.h"

namespace hushwall::darwin {
namespace {

using host::Value;

Class classOf(const Value& value) { return (Class)objectOf(value); }

bool hasOwnMethod(Class cls, SEL selector) {
  unsigned int count = 0;
  Method* methods = class_copyMethodList(cls, &count);
  bool found = false;
  for (unsigned int i = 0; i < count && !found; ++i) {
    found = sel_isEqual(method_getName(methods[i]), selector);
  }
  std::free(methods);
  return found;
}

void complain(const char* what, Class cls, const host::Selector& selector, const char* types) {
  NSLog(@"Hushwall: cannot %s %s of %s: no shape for type encoding %s", what, selector.c_str(),
        class_getName(cls), types != nullptr ? types : "(none)");
}

// Skips the type qualifiers (const, in, out, ...) of one argument type.
char typeCode(const char* type) {
  while (*type != '\0' && std::strchr("rnNoORVA", *type) != nullptr) ++type;
  return *type;
}

long long integerOf(const Value& value) {
  return value.kind() == Value::Kind::kBoolean ? (value.boolValue() ? 1 : 0)
                                               : static_cast<long long>(value.doubleValue());
}

template <typename T>
void setArgument(NSInvocation* invocation, NSInteger index, T argument) {
  [invocation setArgument:&argument atIndex:index];
}

// False, and nothing set, for a type the adapter has no conversion for.
bool setArgument(NSInvocation* invocation, NSInteger index, const char* type, const Value& value) {
  switch (typeCode(type)) {
    case '@':
    case '#': setArgument<id>(invocation, index, objectOf(value)); break;
    case 'c': setArgument<signed char>(invocation, index, (signed char)integerOf(value)); break;
    case 'C': setArgument<unsigned char>(invocation, index, (unsigned char)integerOf(value)); break;
    case 'B': setArgument<bool>(invocation, index, value.boolValue()); break;
    case 's': setArgument<short>(invocation, index, (short)integerOf(value)); break;
    case 'S': setArgument<unsigned short>(invocation, index, (unsigned short)integerOf(value)); break;
    case 'i': setArgument<int>(invocation, index, (int)integerOf(value)); break;
    case 'I': setArgument<unsigned>(invocation, index, (unsigned)integerOf(value)); break;
    case 'l': setArgument<long>(invocation, index, (long)integerOf(value)); break;
    case 'L': setArgument<unsigned long>(invocation, index, (unsigned long)integerOf(value)); break;
    case 'q': setArgument<long long>(invocation, index, integerOf(value)); break;
    case 'Q':
      setArgument<unsigned long long>(invocation, index, (unsigned long long)integerOf(value));
      break;
    case 'f': setArgument<float>(invocation, index, value.floatValue()); break;
    case 'd': setArgument<double>(invocation, index, value.doubleValue()); break;
    default: return false;
  }
  return true;
}

template <typename T>
T returnValue(NSInvocation* invocation) {
  T result{};
  [invocation getReturnValue:&result];
  return result;
}

Value resultOf(NSInvocation* invocation, const char* type) {
  switch (typeCode(type)) {
    case 'v': return Value();
    case '@':
    case '#': return valueOf(returnValue<id>(invocation));
    // The platform's boolean, whichever of its C types this build uses.
    case 'c': return Value::boolean(returnValue<signed char>(invocation) != 0);
    case 'C': return Value::boolean(returnValue<unsigned char>(invocation) != 0);
    case 'B': return Value::boolean(returnValue<bool>(invocation));
    case 's': return Value::integer(returnValue<short>(invocation));
    case 'S': return Value::integer(returnValue<unsigned short>(invocation));
    case 'i': return Value::integer(returnValue<int>(invocation));
    case 'I': return Value::integer(returnValue<unsigned>(invocation));
    case 'l': return Value::integer(returnValue<long>(invocation));
    case 'L': return Value::integer((std::int64_t)returnValue<unsigned long>(invocation));
    case 'q': return Value::integer(returnValue<long long>(invocation));
    case 'Q': return Value::integer((std::int64_t)returnValue<unsigned long long>(invocation));
    case 'f': return Value::real(returnValue<float>(invocation));
    case 'd': return Value::real(returnValue<double>(invocation));
    // A result the adapter cannot convert reads as nothing: the logic
    // treats nothing as "not there", which is its answer to any surprise
    // from the host.
    default: return Value();
  }
}

}  // namespace

Value ObjcRuntime::getClass(const std::string& name) {
  return classValue((Class)objc_getClass(name.c_str()));
}

Value ObjcRuntime::getMetaClass(const Value& cls) {
  id object = objectOf(cls);
  return object == nil ? Value() : classValue(object_getClass(object));
}

void ObjcRuntime::hookMessage(const Value& cls, const host::Selector& selector,
                              host::IMP replacement, host::IMP* slot) {
  Class target = classOf(cls);
  if (target == Nil || hookMessage_ == nullptr) return;
  SEL sel = sel_registerName(selector.c_str());
  Method method = class_getInstanceMethod(target, sel);
  if (method == nullptr) return;
  const char* types = method_getTypeEncoding(method);
  const Shape* shape = shapeOf(canonicalEncoding(types));
  if (shape == nullptr) {
    complain("hook", target, selector, types);
    return;
  }
  HookRecord& record = rememberHook(target, selector, replacement, shape);
  hookMessage_(target, sel, shape->trampoline, &record.original);
  *slot = &callOriginal;
}

bool ObjcRuntime::addMethod(const Value& cls, const host::Selector& selector, host::IMP imp,
                            const char* types) {
  Class target = classOf(cls);
  if (target == Nil) return false;
  SEL sel = sel_registerName(selector.c_str());
  if (hasOwnMethod(target, sel)) return false;
  const Shape* shape = shapeOf(canonicalEncoding(types));
  if (shape == nullptr) {
    complain("add", target, selector, types);
    return false;
  }
  HookRecord& record = rememberHook(target, selector, imp, shape);
  if (!class_addMethod(target, sel, shape->trampoline, types)) {
    forgetHook(record);
    return false;
  }
  return true;
}

Value ObjcRuntime::send(const Value& receiver, const host::Selector& selector,
                        const host::Args& args) {
  id target = objectOf(receiver);
  if (target == nil) return Value();
  SEL sel = sel_registerName(selector.c_str());
  // The common shapes go straight to the implementation, typed; the rest,
  // and selectors the class does not implement itself (forwarding, the
  // unrecognised-selector failure), through NSInvocation.
  Value result;
  if (sendWithShape(target, sel, args, &result)) return result;
  NSMethodSignature* signature = [target methodSignatureForSelector:sel];
  if (signature == nil) {
    [target doesNotRecognizeSelector:sel];  // raises, as the message itself would
    return Value();
  }
  NSInvocation* invocation = [NSInvocation invocationWithMethodSignature:signature];
  [invocation setSelector:sel];
  [invocation setTarget:target];
  const NSUInteger count = [signature numberOfArguments];
  for (NSUInteger i = 2; i < count; ++i) {
    const char* type = [signature getArgumentTypeAtIndex:i];
    if (!setArgument(invocation, (NSInteger)i, type, host::argumentAt(args, i - 2))) {
      // Sending it with a made-up argument could do anything to the host;
      // not sending it is what a missing method would have done.
      complain("send", object_getClass(target), selector, type);
      return Value();
    }
  }
  [invocation invoke];
  return resultOf(invocation, [signature methodReturnType]);
}

}  // namespace hushwall::darwin
