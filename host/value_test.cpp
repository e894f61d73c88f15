#include "host/value.h"

#include <gtest/gtest.h>

#include <limits>

namespace hushwall::host {
namespace {

TEST(ValueTest, NilAnswersZeroToEveryQuestion) {
  Value nil;
  EXPECT_TRUE(nil.isNil());
  EXPECT_FALSE(nil.boolValue());
  EXPECT_EQ(nil.intValue(), 0);
  EXPECT_EQ(nil.floatValue(), 0.0f);
  EXPECT_EQ(nil.timeIntervalSince1970(), 0.0);
  EXPECT_FALSE(nil.text().has_value());
  EXPECT_TRUE(nil.objectForKey("anything").isNil());
  EXPECT_EQ(Value::string(OptText()).kind(), Value::Kind::kNil);
  EXPECT_EQ(Value::object(nullptr).kind(), Value::Kind::kNil);
}

TEST(ValueTest, NumbersAndStringsConvertAsThePlatformDoes) {
  EXPECT_TRUE(Value::integer(2).boolValue());
  EXPECT_FALSE(Value::real(0.0).boolValue());
  EXPECT_TRUE(Value::real(0.25).boolValue());
  EXPECT_EQ(Value::real(-7.9).intValue(), -7);
  EXPECT_EQ(Value::real(1e12).intValue(), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(Value::integer(0x100000005).intValue(), 5);  // the low 32 bits
  EXPECT_EQ(Value::boolean(true).intValue(), 1);
  EXPECT_TRUE(Value::string(T(" y")).boolValue());
  EXPECT_FALSE(Value::string(T("no")).boolValue());
  EXPECT_EQ(Value::string(T(" 42abc")).intValue(), 42);
  EXPECT_EQ(Value::string(T("abc")).intValue(), 0);
  // Containers, dates and bytes have no number in them.
  EXPECT_FALSE(Value::array({Value::boolean(true)}).boolValue());
  EXPECT_EQ(Value::date(5.0).intValue(), 0);
  EXPECT_EQ(Value::date(1400000000.5).timeIntervalSince1970(), 1400000000.5);
}

TEST(ValueTest, FloatValueLosesPrecisionLikeASinglePrecisionFloat) {
  // Present-day times sit between 2^30 and 2^31, where a float's step is 128 s.
  EXPECT_EQ(static_cast<double>(Value::real(1400000050.0).floatValue()), 1400000000.0);
  EXPECT_EQ(static_cast<double>(Value::real(1400000100.0).floatValue()), 1400000128.0);
}

TEST(ValueTest, StringClassIsKeptApartForTheBadgeRule) {
  EXPECT_TRUE(Value::string(T("7")).isMemberOfBaseStringClass());
  EXPECT_FALSE(Value::string(T("7"), Value::StringClass::kSubclass).isMemberOfBaseStringClass());
  EXPECT_FALSE(Value::integer(7).isMemberOfBaseStringClass());
  EXPECT_NE(Value::string(T("7")), Value::string(T("7"), Value::StringClass::kSubclass));
}

TEST(ValueTest, DictionariesLookUpByExactKey) {
  Value inner = Value::dictionary({{T("jid"), Value::string(T("4917@srv"))}});
  Value context = Value::dictionary({{T("userInfo"), inner}});
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
