#include "host/value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace hushwall::host {
namespace {

TEST(ValueTest, NilNumbersAndStringsConvertAsThePlatformDoes) {
  Value nil;
  EXPECT_TRUE(nil.isNil());
  EXPECT_EQ(nil.floatValue(), 0.0f);
  EXPECT_EQ(nil.timeIntervalSince1970(), 0.0);
  EXPECT_FALSE(nil.text().has_value());
  EXPECT_TRUE(nil.objectForKey("anything").isNil());
  EXPECT_EQ(Value::string(OptText()).kind(), Value::Kind::kNil);
  EXPECT_EQ(Value::object(nullptr).kind(), Value::Kind::kNil);
  const std::pair<Value, bool> truth[] = {
      {nil, false}, {Value::integer(2), true}, {Value::integer(1), true}, {Value::integer(0), false},
      {Value::real(0.0), false}, {Value::real(0.25), true}, {Value::string(T(" y")), true},
      {Value::string(T("no")), false}, {Value::array({Value::boolean(true)}), false}};
  for (const auto& [value, expected] : truth) EXPECT_EQ(value.boolValue(), expected);
  const std::pair<Value, int> ints[] = {
      {nil, 0}, {Value::real(-7.9), -7}, {Value::real(1e12), std::numeric_limits<std::int32_t>::max()},
      {Value::real(std::nan("")), 0}, {Value::integer(0x100000005), 5},  // the low 32 bits
      {Value::boolean(true), 1}, {Value::string(T(" 42abc")), 42}, {Value::string(T("abc")), 0},
      {Value::date(5.0), 0}};  // dates, like containers, hold no number
  for (const auto& [value, expected] : ints) EXPECT_EQ(value.intValue(), expected) << expected;
  EXPECT_EQ(Value::date(1400000000.5).timeIntervalSince1970(), 1400000000.5);
  // Present-day times sit between 2^30 and 2^31, where a float's step is 128 s.
  EXPECT_EQ(static_cast<double>(Value::real(1400000050.0).floatValue()), 1400000000.0);
  EXPECT_EQ(static_cast<double>(Value::real(1400000100.0).floatValue()), 1400000128.0);
}

TEST(ValueTest, StringClassAndDictionaryKeysAreExact) {
  EXPECT_TRUE(Value::string(T("7")).isMemberOfBaseStringClass());
  EXPECT_FALSE(Value::string(T("7"), Value::StringClass::kSubclass).isMemberOfBaseStringClass());
  EXPECT_FALSE(Value::integer(7).isMemberOfBaseStringClass());
  EXPECT_NE(Value::string(T("7")), Value::string(T("7"), Value::StringClass::kSubclass));
  Value context = Value::dictionary({{T("userInfo"), Value::dictionary({{T("jid"), Value::string(T("4917@srv"))}})}});
  EXPECT_EQ(context.objectForKey("userInfo").objectForKey("jid").text(), T("4917@srv"));
  EXPECT_TRUE(context.objectForKey("UserInfo").isNil());
  // Asking a non-dictionary for a key answers nil rather than failing.
  EXPECT_TRUE(context.objectForKey("userInfo").objectForKey("jid").objectForKey("x").isNil());
}

TEST(ValueTest, IdentityIsTheSameContainerNotEqualContent) {
  Value a = Value::array({Value::integer(1)});
  Value copy = a;
  Value twin = Value::array({Value::integer(1)});
  EXPECT_TRUE(a.isSameObject(copy));
  EXPECT_FALSE(a.isSameObject(twin));
  EXPECT_EQ(a, twin);
  EXPECT_FALSE(Value::integer(1).isSameObject(Value::integer(1)));  // plain values have no identity
  int runs = 0;
  Value block = Value::block([&] { ++runs; });
  block.invokeBlock();
  Value().invokeBlock();
  EXPECT_EQ(runs, 1);
}

}  // namespace
}  // namespace hushwall::host
