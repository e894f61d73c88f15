#include "host/value.h"

#include <cmath>
#include <limits>

namespace hushwall::host {
namespace {

// C's conversion of a double to int is undefined outside the int's range;
// the platform saturates, which is also what a badge or a flag should see.
std::int32_t saturatingInt(double d) {
  if (std::isnan(d)) return 0;
  if (d >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
  if (d <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(d);
}

}  // namespace

// The variant is read with std::get_if only, never std::get: std::get can
// throw bad_variant_access, whose type the C++ library of the oldest
// firmware the phone package supports does not have, and dyld would refuse
// the whole library for that one missing symbol.

Value Value::boolean(bool b) { return Value(Boolean{b}); }
Value Value::integer(std::int64_t i) { return Value(i); }
Value Value::real(double d) { return Value(Real{d}); }
Value Value::string(Text text, StringClass cls) { return Value(String{std::move(text), cls}); }
Value Value::string(const OptText& text) { return text ? string(*text) : Value(); }
Value Value::date(double secondsSince1970) { return Value(Date{secondsSince1970}); }
Value Value::data(Bytes bytes) { return Value(std::make_shared<const Bytes>(std::move(bytes))); }
Value Value::array(Array items) { return Value(std::make_shared<const Array>(std::move(items))); }
Value Value::dictionary(Dict entries) {
  return Value(std::make_shared<const Dict>(std::move(entries)));
}

Value Value::object(std::shared_ptr<Object> object) {
  return object ? Value(Storage(std::move(object))) : Value();
}
Value Value::block(std::function<void()> body) {
  return Value(std::make_shared<const std::function<void()>>(std::move(body)));
}

Value::Kind Value::kind() const {
  switch (storage_.index()) {
    case 0: return Kind::kNil;
    case 1: return Kind::kBoolean;
    case 2: return Kind::kInteger;
    case 3: return Kind::kReal;
    case 4: return Kind::kString;
    case 5: return Kind::kDate;
    case 6: return Kind::kData;
    case 7: return Kind::kArray;
    case 8: return Kind::kDictionary;
    case 9: return Kind::kObject;
    default: return Kind::kBlock;
  }
}

double Value::doubleValue() const {
  if (auto* b = std::get_if<Boolean>(&storage_)) return b->value ? 1.0 : 0.0;
  if (auto* i = std::get_if<std::int64_t>(&storage_)) return static_cast<double>(*i);
  if (auto* r = std::get_if<Real>(&storage_)) return r->value;
  if (auto* s = std::get_if<String>(&storage_)) return host::doubleValue(s->text);
  return 0.0;
}

bool Value::boolValue() const {
  if (auto* b = std::get_if<Boolean>(&storage_)) return b->value;
  if (auto* i = std::get_if<std::int64_t>(&storage_)) return *i != 0;
  if (auto* r = std::get_if<Real>(&storage_)) return r->value != 0.0;
  if (auto* s = std::get_if<String>(&storage_)) return host::boolValue(s->text);
  return false;
}

std::int32_t Value::intValue() const {
  if (auto* i = std::get_if<std::int64_t>(&storage_)) {
    // A number object holding a wider integer hands back its low 32 bits.
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(*i));
  }
  if (auto* s = std::get_if<String>(&storage_)) return host::intValue(s->text);
  return saturatingInt(doubleValue());
}

float Value::floatValue() const {
  if (auto* s = std::get_if<String>(&storage_)) return static_cast<float>(host::doubleValue(s->text));
  return static_cast<float>(doubleValue());
}

double Value::timeIntervalSince1970() const {
  if (auto* d = std::get_if<Date>(&storage_)) return d->seconds;
  return 0.0;
}

OptText Value::text() const {
  if (auto* s = std::get_if<String>(&storage_)) return s->text;
  return std::nullopt;
}

bool Value::isMemberOfBaseStringClass() const {
  auto* s = std::get_if<String>(&storage_);
  return s != nullptr && s->cls == StringClass::kBase;
}

Value Value::objectForKey(const Text& key) const {
  const Dict* d = dictionary();
  if (d == nullptr) return Value();
  auto it = d->find(key);
  return it == d->end() ? Value() : it->second;
}

const Dict* Value::dictionary() const {
  auto* p = std::get_if<std::shared_ptr<const Dict>>(&storage_);
  return p ? p->get() : nullptr;
}

const Array* Value::array() const {
  auto* p = std::get_if<std::shared_ptr<const Array>>(&storage_);
  return p ? p->get() : nullptr;
}

const Bytes* Value::bytes() const {
  auto* p = std::get_if<std::shared_ptr<const Bytes>>(&storage_);
  return p ? p->get() : nullptr;
}

Object* Value::object() const {
  auto* p = std::get_if<std::shared_ptr<Object>>(&storage_);
  return p ? p->get() : nullptr;
}

void Value::invokeBlock() const {
  auto* p = std::get_if<std::shared_ptr<const std::function<void()>>>(&storage_);
  if (p && *p && **p) (**p)();
}

const void* Value::identity() const {
  switch (kind()) {
    case Kind::kData: return bytes();
    case Kind::kArray: return array();
    case Kind::kDictionary: return dictionary();
    case Kind::kObject: return object();
    case Kind::kBlock: {
      auto* p = std::get_if<std::shared_ptr<const std::function<void()>>>(&storage_);
      return p ? p->get() : nullptr;
    }
    default: return nullptr;
  }
}

bool Value::isSameObject(const Value& other) const {
  const void* mine = identity();
  return mine != nullptr && mine == other.identity();
}

bool Value::operator==(const Value& other) const {
  if (kind() != other.kind()) return false;
  switch (kind()) {
    case Kind::kNil: return true;
    case Kind::kBoolean: return boolValue() == other.boolValue();
    case Kind::kInteger:
      return *std::get_if<std::int64_t>(&storage_) == *std::get_if<std::int64_t>(&other.storage_);
    case Kind::kReal: return doubleValue() == other.doubleValue();
    case Kind::kString: return text() == other.text() &&
                               isMemberOfBaseStringClass() == other.isMemberOfBaseStringClass();
    case Kind::kDate: return timeIntervalSince1970() == other.timeIntervalSince1970();
    case Kind::kData: return *bytes() == *other.bytes();
    case Kind::kArray: return *array() == *other.array();
    case Kind::kDictionary: return *dictionary() == *other.dictionary();
    case Kind::kObject:
    case Kind::kBlock: return isSameObject(other);
  }
  return false;
}

}  // namespace hushwall::host
