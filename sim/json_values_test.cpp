// The simulator's conversions between scenario JSON and host values, at the
// depth where recursion would run out of stack.
#include "sim/json_values.h"

#include <gtest/gtest.h>

namespace hushwall::sim {
namespace {

using nlohmann::json;

json nestedArrays(std::size_t depth) {
  std::string text(depth, '[');
  text += "1";
  text.append(depth, ']');
  return json::parse(text);  // the parser is not recursive
}

host::Value nestedValue(std::size_t depth) {
  host::Value value = host::Value::integer(1);
  for (std::size_t i = 0; i < depth; ++i) value = host::Value::array({value});
  return value;
}

TEST(JsonValues, ConvertUpToTheirNestingLimitAndRefuseDeeperWithoutRecursingOn) {
  const json deepest = nestedArrays(kMaxConvertedNesting);
  const host::Value converted = valueFromJson(deepest);
  EXPECT_EQ(jsonFromValue(converted), deepest);
  EXPECT_THROW(valueFromJson(nestedArrays(kMaxConvertedNesting + 1)), TooDeeplyNested);
  EXPECT_THROW(valueFromJson(nestedArrays(200000)), TooDeeplyNested);
  EXPECT_THROW(jsonFromValue(nestedValue(kMaxConvertedNesting + 1)), TooDeeplyNested);
  // (Host values themselves are freed recursively, so this one stays shallow
  // enough to be freed.)
  EXPECT_THROW(jsonFromValue(nestedValue(5000)), TooDeeplyNested);
  // Plain values inside the deepest container do not count as a level.
  EXPECT_NO_THROW(valueFromJson(json::parse(R"({"a": {"b": "c"}})")));
}

}  // namespace
}  // namespace hushwall::sim
