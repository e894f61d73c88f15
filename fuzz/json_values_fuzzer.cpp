// The app side's conversion of scenario JSON into host values and back, over
// any JSON text. A value nested more than kMaxConvertedNesting levels is
// refused with TooDeeplyNested (however deep: the conversion must not
// overflow the stack first), any other converts, and comes back with the
// same shape: the same strings, keys, kinds and sizes, whole numbers of up
// to 2^53 unchanged.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <nlohmann/json.hpp>

#include "fuzz/fuzz_check.h"
#include "sim/json_values.h"

namespace {

using nlohmann::json;

// The deepest nesting of arrays and objects in valid JSON text, counted on
// the text itself so that the count does not recurse.
std::size_t nestingOfText(std::string_view text) {
  std::size_t depth = 0, deepest = 0;
  bool inString = false, escaped = false;
  for (char c : text) {
    if (inString) {
      if (escaped) escaped = false;
      else if (c == '\\') escaped = true;
      else if (c == '"') inString = false;
    } else if (c == '"') {
      inString = true;
    } else if (c == '[' || c == '{') {
      deepest = std::max(deepest, ++depth);
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return deepest;
}

bool exactInDouble(const json& number) {
  constexpr double kExact = 9007199254740992.0;  // 2^53
  return number.is_number_integer() && number.get<double>() <= kExact && number.get<double>() >= -kExact;
}

// Recursion is bounded here: only converted values, at most
// kMaxConvertedNesting deep, are compared.
bool sameShape(const json& given, const json& back) {
  if (given.is_number()) {
    return back.is_number() && (!exactInDouble(given) || back == given);
  }
  if (given.type() != back.type() || given.size() != back.size()) return false;
  if (given.is_array()) {
    for (std::size_t i = 0; i < given.size(); ++i) {
      if (!sameShape(given[i], back[i])) return false;
    }
    return true;
  }
  if (given.is_object()) {
    for (const auto& [key, item] : given.items()) {
      if (!back.contains(key) || !sameShape(item, back[key])) return false;
    }
    return true;
  }
  return given == back;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace hushwall;
  // The parser takes a NUL byte for the end of its input.
  std::string_view text(reinterpret_cast<const char*>(data), size);
  text = text.substr(0, text.find('\0'));
  json given = json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (given.is_discarded()) return 0;
  const bool tooDeep = nestingOfText(text) > sim::kMaxConvertedNesting;
  try {
    const host::Value value = sim::valueFromJson(given);
    HUSHWALL_FUZZ_CHECK(!tooDeep, "a value nested too deeply was converted");
    HUSHWALL_FUZZ_CHECK(sameShape(given, sim::jsonFromValue(value)),
                        "a value changed on its way into the device and back");
  } catch (const sim::TooDeeplyNested&) {
    HUSHWALL_FUZZ_CHECK(tooDeep, "a value within the nesting limit was refused");
  }
  return 0;
}
