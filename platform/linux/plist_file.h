// Property-list files (XML or binary) as host values.
//
// The settings bundle writes its choices as a property list and the library
// reads them back as a dictionary; tests and tools write such files too.
#ifndef HUSHWALL_PLATFORM_LINUX_PLIST_FILE_H_
#define HUSHWALL_PLATFORM_LINUX_PLIST_FILE_H_

#include <plist/plist.h>

#include <optional>
#include <string>

#include "host/value.h"

namespace hushwall::linux_platform {

// The value a libplist node stands for. Strings are of the base string class,
// integers and UIDs are integers (a value above INT64_MAX wraps, as libplist
// keeps every integer in 64 bits), dates count seconds since 1970. A null
// node is nil. Throws std::invalid_argument for a tree nested deeper than
// kMaxPlistNesting.
host::Value valueFromPlist(plist_t node);

// The dictionary in the property list at `nativePath`, XML or binary. Nothing
// when the file is missing, unreadable, empty, not a property list, beyond
// the parser's safe limits, or holds another root. Never throws.
// Only a regular file is read (opened without waiting, so a FIFO in its
// place is no file either).
std::optional<host::Dict> readPlistDictionary(const std::string& nativePath);
// The same for a file's bytes already read.
std::optional<host::Dict> plistDictionaryFromBytes(std::string bytes);

// A new libplist tree for `value`; the caller frees it with plist_free. Nil,
// host objects and blocks have no property-list form, nor a date outside the
// years 1933-2069: std::invalid_argument.
plist_t plistFromValue(const host::Value& value);

// Write `dict` as a property list, atomically (a temporary file in the same
// directory renamed into place). The directory must exist. Throw
// std::invalid_argument for a value with no property-list form and
// std::runtime_error naming the path when the file cannot be written.
void writeBinaryPlist(const std::string& nativePath, const host::Dict& dict);
// The binary property list's bytes, for a writer of its own (a device root's).
std::string binaryPlistBytes(const host::Dict& dict);
void writeXmlPlist(const std::string& nativePath, const host::Dict& dict);

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_PLIST_FILE_H_
