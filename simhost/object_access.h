// Small pieces the stand-in host classes share: reading and writing object
// properties in UTF-8, and the one implementation behind every plain getter.
#ifndef HUSHWALL_SIMHOST_OBJECT_ACCESS_H_
#define HUSHWALL_SIMHOST_OBJECT_ACCESS_H_

#include <optional>
#include <string>
#include <string_view>

#include "host/runtime.h"
#include "platform/linux/object_runtime.h"

namespace hushwall::simhost {

using OptString = std::optional<std::string>;

// A string value from UTF-8; absent gives nil.
host::Value stringValue(const OptString& utf8);
// The UTF-8 text of a string value; absent for anything else.
OptString utf8(const host::Value& value);

// An object's property, or nil for a missing one or a value that is no object.
host::Value property(const host::Value& object, std::string_view key);
// Throws std::invalid_argument when `object` is no host object.
void setProperty(const host::Value& object, std::string_view key, host::Value value);

// The runtime of the receiver, for host code that makes new objects.
linux_platform::ObjectRuntime& runtimeOf(const host::Value& self);

// The host's getters all answer the property named like the selector
// (`jid`, `sectionID`, `mediaURL`, ...).
host::Value propertyNamedBySelector(const host::Value& self, const host::Selector& cmd,
                                    const host::Args& args);

}  // namespace hushwall::simhost

#endif  // HUSHWALL_SIMHOST_OBJECT_ACCESS_H_
