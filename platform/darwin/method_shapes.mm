#include "platform/darwin/method_shapes.h"

#include <cctype>
#include <cstring>
#include <deque>
#include <type_traits>
#include <utility>

#include "platform/darwin/exception_barrier.h"
#include "platform/darwin/objc_values.h"

namespace hushwall::darwin {
namespace {

using host::Value;

std::deque<HookRecord>& records() {
  static auto* all = new std::deque<HookRecord>;  // never destroyed: hooks outlive statics
  return *all;
}

// The hook of `selector` on the receiver's class or the nearest superclass
// that has one: a subclass that calls its superclass's method reaches the
// superclass's hook.
const HookRecord* findHook(id self, const char* selector) {
  for (Class cls = object_getClass(self); cls != Nil; cls = class_getSuperclass(cls)) {
    for (const HookRecord& record : records()) {
      if (record.cls == cls && record.selector == selector) return &record;
    }
  }
  return nullptr;
}

// How each argument type crosses the bridge.
template <typename T>
struct Bridge;

template <>
struct Bridge<id> {
  static Value in(id object) { return valueOf(object); }
  static id out(const Value& value) { return objectOf(value); }
  static id received(id object) { return object; }
};

template <>
struct Bridge<long> {
  static Value in(long number) { return Value::integer(number); }
  static long out(const Value& value) { return static_cast<long>(value.doubleValue()); }
  static id received(long) { return nil; }
};

template <>
struct Bridge<unsigned int> {
  static Value in(unsigned int number) { return Value::integer(number); }
  static unsigned int out(const Value& value) {
    return static_cast<unsigned int>(static_cast<long long>(value.doubleValue()));
  }
  static id received(unsigned int) { return nil; }
};

template <>
struct Bridge<unsigned long> {
  static Value in(unsigned long number) { return Value::integer(static_cast<std::int64_t>(number)); }
  static unsigned long out(const Value& value) {
    return static_cast<unsigned long>(static_cast<long long>(value.doubleValue()));
  }
  static id received(unsigned long) { return nil; }
};

// The platform's boolean, in whichever C type the build declares it: bool
// on arm64, signed char on 32-bit ARM, unsigned char under GNUstep.
template <typename B>
struct BooleanBridge {
  static Value in(B flag) { return Value::boolean(flag != 0); }
  static B out(const Value& value) { return static_cast<B>(value.boolValue() ? 1 : 0); }
  static id received(B) { return nil; }
};
template <>
struct Bridge<bool> : BooleanBridge<bool> {};
template <>
struct Bridge<signed char> : BooleanBridge<signed char> {};
template <>
struct Bridge<unsigned char> : BooleanBridge<unsigned char> {};

template <typename R, typename... A>
struct ShapeOf {
  static R trampoline(id self, SEL selector, A... arguments) {
    const char* name = sel_getName(selector);
    const HookRecord* record = findHook(self, name);
    // The host's call as it came, for when the adapter cannot do its part:
    // an argument it cannot convert, or a replacement that raised before
    // handing the call on. The host then gets exactly what it would have
    // got without us, and never an exception.
    auto handOnUnchanged = [&]() -> R {
      IMP original = record != nullptr ? record->original : nullptr;
      if (original == nullptr) return R();
      return reinterpret_cast<R (*)(id, SEL, A...)>(original)(self, selector, arguments...);
    };
    host::Args args;
    if (raisedInside([&] { args = host::Args{Bridge<A>::in(arguments)...}; })) {
      return handOnUnchanged();
    }
    IncomingArguments received({Bridge<A>::received(arguments)...}, args);
    Value result = Value();
    if (record != nullptr &&
        raisedInside([&] { result = record->implementation(objectValue(self), name, args); })) {
      if (!received.handedOn()) return handOnUnchanged();
      // Handed on already (and perhaps the host's own method raised): the
      // host has had the call once, which is all it may get.
      result = Value();
    }
    if constexpr (!std::is_void_v<R>) {
      R out = R();
      if (raisedInside([&] { out = Bridge<R>::out(result); })) return R();
      return out;
    }
  }

  static Value callOriginal(IMP original, id self, SEL selector, const host::Args& args) {
    return call(original, self, selector, args, std::index_sequence_for<A...>{});
  }

  template <std::size_t... I>
  static Value call(IMP original, id self, SEL selector, const host::Args& args,
                    std::index_sequence<I...>) {
    auto function = reinterpret_cast<R (*)(id, SEL, A...)>(original);
    if constexpr (std::is_void_v<R>) {
      function(self, selector, Bridge<A>::out(host::argumentAt(args, I))...);
      return Value();
    } else {
      return Bridge<R>::in(function(self, selector, Bridge<A>::out(host::argumentAt(args, I))...));
    }
  }

  static constexpr Shape shape(const char* encoding) {
    return Shape{encoding, reinterpret_cast<IMP>(&trampoline), &callOriginal};
  }
};

// Every shape the hook table needs: the table's added methods ("v@:",
// "@@:@", "v@:@"), the one-object methods it replaces, the bulletin
// method observer:addBulletin:forFeed: whose feed is an unsigned 32-bit
// integer (unsigned long where a build declares it so), and its longer
// form from iOS 8.2, ...playLightsAndSirens:withReply:, with a boolean and
// a block (an object) after the feed.
const Shape kShapes[] = {
    ShapeOf<void>::shape("v@:"),
    ShapeOf<id>::shape("@@:"),
    ShapeOf<void, id>::shape("v@:@"),
    ShapeOf<id, id>::shape("@@:@"),
    ShapeOf<void, id, long>::shape("v@:@q"),
    ShapeOf<void, id, id>::shape("v@:@@"),
    ShapeOf<void, id, id, id>::shape("v@:@@@"),
    ShapeOf<void, id, id, unsigned int>::shape("v@:@@I"),
    ShapeOf<void, id, id, unsigned long>::shape("v@:@@Q"),
    ShapeOf<void, id, id, long>::shape("v@:@@q"),
    ShapeOf<void, id, id, unsigned long, bool, id>::shape("v@:@@QB@"),
    ShapeOf<void, id, id, unsigned int, signed char, id>::shape("v@:@@Ic@"),
    ShapeOf<void, id, id, unsigned int, unsigned char, id>::shape("v@:@@IC@"),
    ShapeOf<void, id, id, unsigned long, signed char, id>::shape("v@:@@Qc@"),
};

bool isQualifier(char c) { return std::strchr("rnNoORVA", c) != nullptr; }

}  // namespace

std::string canonicalEncoding(const char* types) {
  std::string canonical;
  if (types == nullptr) return canonical;
  const bool longIs64 = sizeof(long) == 8;
  for (const char* p = types; *p != '\0';) {
    while (isQualifier(*p)) ++p;
    if (*p == '\0') break;
    char type = *p++;
    if (type == '@') {
      if (*p == '?') ++p;  // a block is an object
      if (*p == '"') {     // @"ClassName"
        const char* end = std::strchr(p + 1, '"');
        p = end != nullptr ? end + 1 : p + std::strlen(p);
      }
    }
    if (longIs64 && type == 'l') type = 'q';
    if (longIs64 && type == 'L') type = 'Q';
    canonical.push_back(type);
    while (std::isdigit(static_cast<unsigned char>(*p)) || *p == '-' || *p == '+') ++p;
  }
  return canonical;
}

const Shape* shapeOf(const std::string& canonical) {
  for (const Shape& shape : kShapes) {
    if (canonical == shape.encoding) return &shape;
  }
  return nullptr;
}

HookRecord& rememberHook(Class cls, const std::string& selector, host::IMP implementation,
                         const Shape* shape) {
  records().push_back(HookRecord{cls, selector, implementation, shape});
  return records().back();
}

void forgetHook(const HookRecord& record) {
  // Only the record just made is ever taken back; the others stay where
  // they are, since running trampolines may hold them.
  if (!records().empty() && &records().back() == &record) records().pop_back();
}

bool sendWithShape(id target, SEL selector, const host::Args& args, Value* result) {
  Method method = class_getInstanceMethod(object_getClass(target), selector);
  if (method == nullptr) return false;
  const Shape* shape = shapeOf(canonicalEncoding(method_getTypeEncoding(method)));
  if (shape == nullptr) return false;
  *result = shape->callOriginal(method_getImplementation(method), target, selector, args);
  return true;
}

Value callOriginal(const Value& self, const host::Selector& selector, const host::Args& args) {
  id receiver = objectOf(self);
  if (receiver == nil) return Value();
  const HookRecord* record = findHook(receiver, selector.c_str());
  if (record == nullptr || record->original == nullptr) return Value();
  // From here on the host has the call: whatever the replacement does
  // afterwards, the trampoline must not hand it on a second time.
  noteHandedOn();
  return record->shape->callOriginal(record->original, receiver,
                                     sel_registerName(selector.c_str()), args);
}

}  // namespace hushwall::darwin
