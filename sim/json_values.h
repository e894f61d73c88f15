// Scenario JSON as host values and back: bulletin contexts, badges and
// settings go from the scenario into the device, and what the apps hold
// comes back out for the final state.
#ifndef HUSHWALL_SIM_JSON_VALUES_H_
#define HUSHWALL_SIM_JSON_VALUES_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>

#include "host/value.h"

namespace hushwall::sim {

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
