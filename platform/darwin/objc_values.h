// Host objects as the logic sees them. Strings, numbers, dates, data,
// arrays and dictionaries become plain values; anything else (a stanza, a
// controller, a class) is held, retained, as an object and reached only by
// messages. Going back, a value becomes the object it came from whenever the
// logic hands on what it received (see IncomingArguments), and a new
// autoreleased object otherwise.
#ifndef HUSHWALL_PLATFORM_DARWIN_OBJC_VALUES_H_
#define HUSHWALL_PLATFORM_DARWIN_OBJC_VALUES_H_

#import <Foundation/Foundation.h>

#include <vector>

#include "host/object.h"
#include "host/runtime.h"
#include "host/text.h"
#include "host/value.h"

namespace hushwall::darwin {

class ObjcObject : public host::Object {
 public:
  // Classes live as long as the process and are not retained.
  ObjcObject(id object, bool retained);
  ~ObjcObject() override;
  ObjcObject(const ObjcObject&) = delete;
  ObjcObject& operator=(const ObjcObject&) = delete;
  id object() const { return object_; }

 private:
  id object_;
  bool retained_;
};

// An object held as an object whatever its class (a receiver, a class).
host::Value objectValue(id object);
host::Value classValue(Class cls);
// The plain value of an object, or an object value.
host::Value valueOf(id object);
// The object behind a value: the very object for object values and for
// values received by the hook running on this thread, else a new
// autoreleased one. nil for nil.
id objectOf(const host::Value& value);

host::Text textOf(NSString* string);
NSString* stringOf(const host::Text& text);  // autoreleased

// The arguments a hook received, kept while its replacement runs, so that
// what the logic hands on unchanged reaches the original implementation as
// the very objects the host passed.
class IncomingArguments {
 public:
  IncomingArguments(std::vector<id> objects, const host::Args& values);
  ~IncomingArguments();
  IncomingArguments(const IncomingArguments&) = delete;
  IncomingArguments& operator=(const IncomingArguments&) = delete;

  // The received object `value` was made from, or nil.
  id find(const host::Value& value) const;

  // Whether the hook has called the original implementation (noteHandedOn).
  bool handedOn() const { return handedOn_; }

 private:
  friend void noteHandedOn();
  std::vector<id> objects_;
  host::Args values_;
  bool handedOn_ = false;
};

// Marks the innermost hook running on this thread as having handed its call
// on to the original implementation.
void noteHandedOn();

}  // namespace hushwall::darwin

#endif  // HUSHWALL_PLATFORM_DARWIN_OBJC_VALUES_H_
