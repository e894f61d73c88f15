// A host object as the logic sees it: nil, a boolean, a number, a string, a
// date, bytes, an array or a dictionary.
//
// The logic reads dictionaries it did not build (the settings file, a
// bulletin's context, the history records of a batch) and asks their values
// for boolValue, intValue and friends with no type check, exactly as the
// platform's messages would: a message to nil answers zero, a string answers
// by the string rules of text.h. Value keeps those answers in one place.
// Values are immutable and cheap to copy (containers are shared).
//
// Host objects that are not plain values (a message stanza, a controller, a
// class) are held as kObject and reached only by sending them messages
// through the host runtime (runtime.h); blocks the library hands to the host
// (a button's handler) are kBlock.
#ifndef HUSHWALL_HOST_VALUE_H_
#define HUSHWALL_HOST_VALUE_H_

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <variant>
#include <vector>

#include "host/text.h"

namespace hushwall::host {

class Value;
class Object;
using Bytes = std::vector<std::uint8_t>;
using Array = std::vector<Value>;
using Dict = std::map<Text, Value>;

class Value {
 public:
  enum class Kind { kNil, kBoolean, kInteger, kReal, kString, kDate, kData, kArray, kDictionary,
                    kObject, kBlock };

  // Which string class a string value belongs to. The badge rule treats a
  // string whose class is exactly the base class differently from a string of
  // a subclass (a constant or bridged string, say).
  enum class StringClass { kBase, kSubclass };

  Value() = default;  // nil

  static Value boolean(bool b);
  static Value integer(std::int64_t i);
  static Value real(double d);
  static Value string(Text text, StringClass cls = StringClass::kBase);
  static Value string(const OptText& text);  // absent text gives nil
  static Value date(double secondsSince1970);
  static Value data(Bytes bytes);
  static Value array(Array items);
  static Value dictionary(Dict entries);
  static Value object(std::shared_ptr<Object> object);  // null gives nil
  static Value block(std::function<void()> body);

  Kind kind() const;
  bool isNil() const { return kind() == Kind::kNil; }

  // The platform's answers, with no type check. nil answers 0 / NO.
  // Strings follow text.h; numbers convert as C would; containers, dates and
  // bytes have no such value and answer 0 / NO.
  bool boolValue() const;
  std::int32_t intValue() const;
  float floatValue() const;
  double doubleValue() const;
  // timeIntervalSince1970 of a date; 0 for anything else.
  double timeIntervalSince1970() const;

  // The text of a string value; absent for anything else.
  OptText text() const;
  // isMemberOfClass:[NSString class]: a string of exactly the base class.
  bool isMemberOfBaseStringClass() const;

  // objectForKey: nil when this is not a dictionary or has no such key.
  Value objectForKey(const Text& key) const;
  Value objectForKey(std::string_view utf8Key) const { return objectForKey(fromUtf8(utf8Key)); }

  // Direct access for code that knows the kind; null when it is another kind.
  const Dict* dictionary() const;
  const Array* array() const;
  const Bytes* bytes() const;
  Object* object() const;
  // Runs a block; does nothing for anything else (a call to a nil block would
  // crash the host, and the library never makes one).
  void invokeBlock() const;

  // Object identity: the same container or host object, not just equal
  // content. The host can tell whether it was handed back the very array it
  // passed in.
  bool isSameObject(const Value& other) const;

  bool operator==(const Value& other) const;
  bool operator!=(const Value& other) const { return !(*this == other); }

 private:
  struct Boolean { bool value; };
  struct Real { double value; };
  struct String { Text text; StringClass cls; };
  struct Date { double seconds; };
  using Storage = std::variant<std::monostate, Boolean, std::int64_t, Real, String, Date,
                               std::shared_ptr<const Bytes>, std::shared_ptr<const Array>,
                               std::shared_ptr<const Dict>, std::shared_ptr<Object>,
                               std::shared_ptr<const std::function<void()>>>;
  const void* identity() const;
  explicit Value(Storage s) : storage_(std::move(s)) {}
  Storage storage_;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_VALUE_H_
