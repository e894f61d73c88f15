#include "simhost/object_access.h"

#include <stdexcept>

namespace hushwall::simhost {

using linux_platform::ObjectRuntime;

host::Value stringValue(const OptString& utf8) {
  return utf8 ? host::Value::string(host::fromUtf8(std::string_view(*utf8))) : host::Value();
}

OptString utf8(const host::Value& value) {
  host::OptText text = value.text();
  if (!text) return std::nullopt;
  return host::toUtf8(*text);
}

host::Value property(const host::Value& object, std::string_view key) {
  linux_platform::HostObject* o = ObjectRuntime::asHostObject(object);
  return o ? o->property(key) : host::Value();
}

void setProperty(const host::Value& object, std::string_view key, host::Value value) {
  linux_platform::HostObject* o = ObjectRuntime::asHostObject(object);
  if (o == nullptr) throw std::invalid_argument("not a host object");
  o->setProperty(key, std::move(value));
}

ObjectRuntime& runtimeOf(const host::Value& self) {
  ObjectRuntime* runtime = ObjectRuntime::runtimeOf(self);
  if (runtime == nullptr) throw std::invalid_argument("not a host object");
  return *runtime;
}

host::Value propertyNamedBySelector(const host::Value& self, const host::Selector& cmd,
                                    const host::Args&) {
  return property(self, cmd);
}

}  // namespace hushwall::simhost
