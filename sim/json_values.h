// Scenario JSON as host values and back: bulletin contexts, badges and
// settings go from the scenario into the device, and what the apps hold
// comes back out for the final state.
#ifndef HUSHWALL_SIM_JSON_VALUES_H_
#define HUSHWALL_SIM_JSON_VALUES_H_

#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "host/value.h"

namespace hushwall::sim {

// The conversions recurse once per level of nesting, so they take no more
// levels than this (a container holding only plain values is one level) and
// throw TooDeeplyNested for a deeper value before the stack can overflow.
// The scenario loader refuses deep values well before this.
inline constexpr std::size_t kMaxConvertedNesting = 256;

class TooDeeplyNested : public std::invalid_argument {
 public:
  TooDeeplyNested();
};

// null is nil; whole numbers are integers, others reals; objects are
// dictionaries. Strings are of the base string class.
host::Value valueFromJson(const nlohmann::json& json);

// nil is null; dates are seconds since 1970; bytes are base64; host objects
// and blocks, which have no JSON form, are their kind in angle brackets.
nlohmann::json jsonFromValue(const host::Value& value);

// Standard base64 (with or without padding, no line breaks); nothing when
// the text is not base64.
std::optional<host::Bytes> decodeBase64(std::string_view text);
std::string encodeBase64(const host::Bytes& bytes);

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_JSON_VALUES_H_
