#include "platform/darwin/objc_values.h"

#include <Block.h>
#include <pthread.h>

#include <memory>
#include <utility>

// Owns one heap copy of a block for as long as the autorelease pool keeps
// it; whoever keeps the block longer copies it again.
@interface HWBlockOwner : NSObject {
  void (^block_)(void);
}
- (id)initWithBlock:(void (^)(void))block;
@end

@implementation HWBlockOwner
- (id)initWithBlock:(void (^)(void))block {
  if ((self = [super init]) != nil) block_ = block;
  return self;
}
- (void)dealloc {
  Block_release(block_);
  [super dealloc];
}
@end

namespace hushwall::darwin {
namespace {

using host::Value;

// The frames of the hooks running on this thread, innermost last. Hooks
// run on several host threads (the messenger's connection thread, the main
// thread), so each thread keeps its own stack. Kept through a pthread key
// rather than thread_local: the runtime support for thread_local is missing
// on the oldest firmware the package supports, and clang refuses it there.
using Frames = std::vector<IncomingArguments*>;

pthread_key_t framesKey() {
  static pthread_key_t key = [] {
    pthread_key_t made;
    pthread_key_create(&made, [](void* frames) { delete static_cast<Frames*>(frames); });
    return made;
  }();
  return key;
}

Frames& incomingFrames() {
  auto* frames = static_cast<Frames*>(pthread_getspecific(framesKey()));
  if (frames == nullptr) {
    frames = new Frames;
    pthread_setspecific(framesKey(), frames);
  }
  return *frames;
}

Class booleanNumberClass() {
  static Class cls = [[NSNumber numberWithBool:YES] class];
  return cls;
}

id blockOf(const Value& value) {
  Value body = value;
  void (^onStack)(void) = ^{
    body.invokeBlock();
  };
  void (^onHeap)(void) = Block_copy(onStack);
  [[[HWBlockOwner alloc] initWithBlock:onHeap] autorelease];
  return (id)onHeap;
}

// Strings and dates are values: an equal one stands for the received one.
bool standsFor(const Value& received, const Value& value) {
  if (received.kind() != value.kind()) return false;
  switch (value.kind()) {
    case Value::Kind::kString:
    case Value::Kind::kDate: return received == value;
    default: return received.isSameObject(value);
  }
}

}  // namespace

ObjcObject::ObjcObject(id object, bool retained) : object_(object), retained_(retained) {
  if (retained_) [object_ retain];
}

ObjcObject::~ObjcObject() {
  if (retained_) [object_ release];
}

Value objectValue(id object) {
  if (object == nil) return Value();
  return Value::object(std::make_shared<ObjcObject>(object, true));
}

Value classValue(Class cls) {
  if (cls == Nil) return Value();
  return Value::object(std::make_shared<ObjcObject>((id)cls, false));
}

host::Text textOf(NSString* string) {
  const NSUInteger length = [string length];
  host::Text text(length, u'\0');
  if (length > 0) [string getCharacters:(unichar*)text.data() range:NSMakeRange(0, length)];
  return text;
}

NSString* stringOf(const host::Text& text) {
  return [NSString stringWithCharacters:(const unichar*)text.data() length:text.size()];
}

Value valueOf(id object) {
  if (object == nil) return Value();
  if ([object isKindOfClass:[NSString class]]) {
    // The badge rule tells the base string class from its subclasses.
    return Value::string(textOf(object), [object isMemberOfClass:[NSString class]]
                                             ? Value::StringClass::kBase
                                             : Value::StringClass::kSubclass);
  }
  if ([object isKindOfClass:[NSNumber class]]) {
    if ([object class] == booleanNumberClass()) return Value::boolean([object boolValue]);
    const char type = *[object objCType];
    if (type == 'f' || type == 'd') return Value::real([object doubleValue]);
    return Value::integer([object longLongValue]);
  }
  if ([object isKindOfClass:[NSDate class]]) return Value::date([object timeIntervalSince1970]);
  if ([object isKindOfClass:[NSData class]]) {
    const auto* bytes = static_cast<const std::uint8_t*>([object bytes]);
    return Value::data(host::Bytes(bytes, bytes + [object length]));
  }
  if ([object isKindOfClass:[NSArray class]]) {
    host::Array items;
    for (id item in object) items.push_back(valueOf(item));
    return Value::array(std::move(items));
  }
  if ([object isKindOfClass:[NSDictionary class]]) {
    host::Dict entries;
    for (id key in object) {
      // Only string keys have a place in the logic's dictionaries.
      if ([key isKindOfClass:[NSString class]]) {
        entries.emplace(textOf(key), valueOf([object objectForKey:key]));
      }
    }
    return Value::dictionary(std::move(entries));
  }
  return objectValue(object);
}

id objectOf(const Value& value) {
  const Frames& incoming = incomingFrames();
  for (auto frame = incoming.rbegin(); frame != incoming.rend(); ++frame) {
    if (id received = (*frame)->find(value)) return received;
  }
  switch (value.kind()) {
    case Value::Kind::kNil: return nil;
    case Value::Kind::kBoolean: return [NSNumber numberWithBool:value.boolValue()];
    case Value::Kind::kInteger:
      return [NSNumber numberWithLongLong:static_cast<long long>(value.doubleValue())];
    case Value::Kind::kReal: return [NSNumber numberWithDouble:value.doubleValue()];
    case Value::Kind::kString: return stringOf(*value.text());
    case Value::Kind::kDate:
      return [NSDate dateWithTimeIntervalSince1970:value.timeIntervalSince1970()];
    case Value::Kind::kData:
      return [NSData dataWithBytes:value.bytes()->data() length:value.bytes()->size()];
    case Value::Kind::kArray: {
      NSMutableArray* array = [NSMutableArray arrayWithCapacity:value.array()->size()];
      for (const Value& item : *value.array()) {
        id object = objectOf(item);
        [array addObject:(object != nil ? object : (id)[NSNull null])];
      }
      return array;
    }
    case Value::Kind::kDictionary: {
      NSMutableDictionary* dictionary = [NSMutableDictionary dictionary];
      for (const auto& [key, item] : *value.dictionary()) {
        if (id object = objectOf(item)) [dictionary setObject:object forKey:stringOf(key)];
      }
      return dictionary;
    }
    case Value::Kind::kObject: {
      auto* held = dynamic_cast<ObjcObject*>(value.object());
      return held != nullptr ? held->object() : nil;
    }
    case Value::Kind::kBlock: return blockOf(value);
  }
  return nil;
}

IncomingArguments::IncomingArguments(std::vector<id> objects, const host::Args& values)
    : objects_(std::move(objects)), values_(values) {
  incomingFrames().push_back(this);
}

IncomingArguments::~IncomingArguments() { incomingFrames().pop_back(); }

void noteHandedOn() {
  Frames& frames = incomingFrames();
  if (!frames.empty()) frames.back()->handedOn_ = true;
}

id IncomingArguments::find(const Value& value) const {
  if (value.isNil()) return nil;
  for (std::size_t i = 0; i < objects_.size() && i < values_.size(); ++i) {
    if (objects_[i] != nil && standsFor(values_[i], value)) return objects_[i];
  }
  return nil;
}

}  // namespace hushwall::darwin
