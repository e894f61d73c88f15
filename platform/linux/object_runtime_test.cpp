#include "platform/linux/object_runtime.h"

#include <gtest/gtest.h>

namespace hushwall::linux_platform {
namespace {

using host::Args;
using host::IMP;
using host::Selector;
using host::T;
using host::Value;

Value str(const char* s) { return Value::string(T(s)); }

// Implementations answer with who ran, so a test can tell them apart.
Value animalSpeak(const Value&, const Selector&, const Args&) { return str("animal"); }
Value catSpeak(const Value&, const Selector&, const Args&) { return str("cat"); }
Value classDescribe(const Value&, const Selector&, const Args&) { return str("class"); }

// A hook reaches the implementation it replaced only through its slot, as on
// the device; one slot per hook.
IMP speakSlot = nullptr;
Value hookedSpeak(const Value& self, const Selector& cmd, const Args& args) {
  return str(("hook+" + host::toUtf8(*speakSlot(self, cmd, args).text())).c_str());
}
IMP describeSlot = nullptr;
Value hookedDescribe(const Value& self, const Selector& cmd, const Args& args) {
  return str(("hook+" + host::toUtf8(*describeSlot(self, cmd, args).text())).c_str());
}
Value added(const Value&, const Selector&, const Args&) { return str("added"); }

std::string said(ObjectRuntime& rt, const Value& receiver, const Selector& sel) {
  return host::toUtf8(*rt.send(receiver, sel, {}).text());
}

class ObjectRuntimeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    speakSlot = nullptr;
    describeSlot = nullptr;
    rt.registerClass("Animal");
    rt.registerClass("Cat", "Animal");
    rt.registerClass("Kitten", "Cat");
    rt.addHostMethod("Animal", "speak", animalSpeak);
    rt.addHostMethod("Animal", "describe", classDescribe, true);
  }
  ObjectRuntime rt;
};

TEST_F(ObjectRuntimeTest, DispatchFollowsTheSuperclassChain) {
  Value kitten = rt.newObject("Kitten", {{T("name"), str("Tom")}});
  EXPECT_EQ(said(rt, kitten, "speak"), "animal");
  rt.addHostMethod("Cat", "speak", catSpeak);
  EXPECT_EQ(said(rt, kitten, "speak"), "cat");
  EXPECT_EQ(said(rt, rt.newObject("Animal"), "speak"), "animal");

  // Properties through the root class; a missing key is nil.
  EXPECT_EQ(rt.send(kitten, "valueForKey:", {str("name")}), str("Tom"));
  rt.send(kitten, "setValue:forKey:", {Value::integer(3), str("age")});
  EXPECT_EQ(rt.send(kitten, "valueForKey:", {str("age")}), Value::integer(3));
  EXPECT_TRUE(rt.send(kitten, "valueForKey:", {str("owner")}).isNil());

  // Class methods are inherited by subclasses but not answered by instances.
  EXPECT_EQ(said(rt, rt.getClass("Kitten"), "describe"), "class");
  EXPECT_THROW(rt.send(kitten, "describe", {}), UnrecognizedSelector);
  EXPECT_TRUE(rt.getClass("Dog").isNil());
  EXPECT_TRUE(rt.getMetaClass(Value()).isNil());
  EXPECT_THROW(rt.registerClass("Dog", "Wolf"), std::invalid_argument);
  EXPECT_THROW(rt.registerClass("Cat"), std::invalid_argument);
}

TEST_F(ObjectRuntimeTest, HookRunsInPlaceAndReachesTheOriginalThroughItsSlot) {
  Value animal = rt.newObject("Animal");
  Value cat = rt.newObject("Cat");
  // Hooking an inherited method puts the hook on the subclass only.
  rt.hookMessage(rt.getClass("Cat"), "speak", hookedSpeak, &speakSlot);
  ASSERT_EQ(speakSlot, &animalSpeak);
  EXPECT_EQ(said(rt, cat, "speak"), "hook+animal");
  EXPECT_EQ(said(rt, rt.newObject("Kitten"), "speak"), "hook+animal");
  EXPECT_EQ(said(rt, animal, "speak"), "animal");
  EXPECT_EQ(rt.typeEncoding(rt.getClass("Cat"), "speak"), "@@:");
}

TEST_F(ObjectRuntimeTest, ClassMethodHookGoesThroughTheMetaClass) {
  rt.addHostMethod("Animal", "describe", animalSpeak);  // an instance method of the same name
  Value meta = rt.getMetaClass(rt.getClass("Animal"));
  ASSERT_FALSE(meta.isNil());
  EXPECT_FALSE(meta.isSameObject(rt.getClass("Animal")));

  // The meta-class hook replaces the class method only, not the instance
  // method of the same name.
  rt.hookMessage(meta, "describe", hookedDescribe, &describeSlot);
  EXPECT_EQ(describeSlot, &classDescribe);
  EXPECT_EQ(said(rt, rt.getClass("Animal"), "describe"), "hook+class");
  EXPECT_EQ(said(rt, rt.newObject("Animal"), "describe"), "animal");
}

TEST_F(ObjectRuntimeTest, MissingClassOrSelectorChangesNothing) {
  rt.hookMessage(rt.getClass("Missing"), "speak", hookedSpeak, &speakSlot);
  EXPECT_EQ(speakSlot, nullptr);
  EXPECT_FALSE(rt.addMethod(rt.getClass("Missing"), "speak", added, "v@:"));

  // A selector the class does not answer is not hooked: it stays unanswered.
  rt.hookMessage(rt.getClass("Cat"), "purr", hookedSpeak, &speakSlot);
  EXPECT_EQ(speakSlot, nullptr);
  EXPECT_THROW(rt.send(rt.newObject("Cat"), "purr", {}), UnrecognizedSelector);
}

TEST_F(ObjectRuntimeTest, AddMethodKeepsAnOwnMethodAndRecordsItsTypes) {
  rt.addHostMethod("Cat", "speak", catSpeak);
  EXPECT_FALSE(rt.addMethod(rt.getClass("Cat"), "speak", added, "v@:"));
  EXPECT_EQ(said(rt, rt.newObject("Cat"), "speak"), "cat");
  EXPECT_EQ(rt.typeEncoding(rt.getClass("Cat"), "speak"), "@@:");

  // Inherited only: the subclass gets its own, the superclass is untouched.
  EXPECT_TRUE(rt.addMethod(rt.getClass("Kitten"), "speak", added, "v@:"));
  EXPECT_EQ(said(rt, rt.newObject("Kitten"), "speak"), "added");
  EXPECT_EQ(rt.typeEncoding(rt.getClass("Kitten"), "speak"), "v@:");
  EXPECT_EQ(said(rt, rt.newObject("Cat"), "speak"), "cat");

  EXPECT_TRUE(rt.addMethod(rt.getClass("Animal"), "fetch:", added, "@@:@"));
  EXPECT_EQ(rt.typeEncoding(rt.getClass("Kitten"), "fetch:"), "@@:@");
  EXPECT_EQ(rt.typeEncoding(rt.getClass("Kitten"), "purr"), std::nullopt);
}

TEST_F(ObjectRuntimeTest, UnansweredMessagesFailAsOnThePlatformAndNilAnswersNil) {
  try {
    rt.send(rt.newObject("Kitten"), "purr:", {Value()});
    FAIL() << "no failure";
  } catch (const UnrecognizedSelector& e) {
    EXPECT_STREQ(e.what(), "-[Kitten purr:]: unrecognized selector sent to instance");
  }
  try {
    rt.send(rt.getClass("Cat"), "purr", {});
    FAIL() << "no failure";
  } catch (const UnrecognizedSelector& e) {
    EXPECT_STREQ(e.what(), "+[Cat purr]: unrecognized selector sent to class");
  }
  EXPECT_THROW(rt.send(str("text"), "speak", {}), UnrecognizedSelector);
  EXPECT_TRUE(rt.send(Value(), "speak", {}).isNil());
  EXPECT_TRUE(rt.send(Value(), "purr", {}).isNil());
}

}  // namespace
}  // namespace hushwall::linux_platform
