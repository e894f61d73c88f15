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
IMP speakSlot = nullptr, describeSlot = nullptr;
template <IMP* slot>
Value hooked(const Value& self, const Selector& cmd, const Args& args) {
  return str(("hook+" + host::toUtf8(*(*slot)(self, cmd, args).text())).c_str());
}
Value added(const Value&, const Selector&, const Args&) { return str("added"); }

std::string said(ObjectRuntime& rt, const Value& receiver, const Selector& sel) {
  return host::toUtf8(*rt.send(receiver, sel, {}).text());
}

class ObjectRuntimeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    speakSlot = describeSlot = nullptr;
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

TEST_F(ObjectRuntimeTest, HooksRunInPlaceReachTheOriginalThroughTheirSlotAndNeedWhatTheyHook) {
  // Hooking an inherited method puts the hook on the subclass only.
  rt.hookMessage(rt.getClass("Cat"), "speak", hooked<&speakSlot>, &speakSlot);
  ASSERT_EQ(speakSlot, &animalSpeak);
  EXPECT_EQ(said(rt, rt.newObject("Cat"), "speak"), "hook+animal");
  EXPECT_EQ(said(rt, rt.newObject("Kitten"), "speak"), "hook+animal");
  EXPECT_EQ(said(rt, rt.newObject("Animal"), "speak"), "animal");
  EXPECT_EQ(rt.typeEncoding(rt.getClass("Cat"), "speak"), "@@:");

  // The meta-class hook replaces the class method only, not the instance
  // method of the same name.
  rt.addHostMethod("Animal", "describe", animalSpeak);
  Value meta = rt.getMetaClass(rt.getClass("Animal"));
  ASSERT_FALSE(meta.isNil());
  EXPECT_FALSE(meta.isSameObject(rt.getClass("Animal")));
  rt.hookMessage(meta, "describe", hooked<&describeSlot>, &describeSlot);
  EXPECT_EQ(describeSlot, &classDescribe);
  EXPECT_EQ(said(rt, rt.getClass("Animal"), "describe"), "hook+class");
  EXPECT_EQ(said(rt, rt.newObject("Animal"), "describe"), "animal");

  // A missing class, or a selector the class does not answer, is not hooked.
  IMP none = nullptr;
  rt.hookMessage(rt.getClass("Missing"), "speak", hooked<&speakSlot>, &none);
  rt.hookMessage(rt.getClass("Cat"), "purr", hooked<&speakSlot>, &none);
  EXPECT_EQ(none, nullptr);
  EXPECT_THROW(rt.send(rt.newObject("Cat"), "purr", {}), UnrecognizedSelector);
  EXPECT_FALSE(rt.addMethod(rt.getClass("Missing"), "speak", added, "v@:"));
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
  auto failure = [&](const Value& receiver, const Selector& sel, const Args& args) {
    try {
      rt.send(receiver, sel, args);
    } catch (const UnrecognizedSelector& e) {
      return std::string(e.what());
    }
    return std::string("no failure");
  };
  EXPECT_EQ(failure(rt.newObject("Kitten"), "purr:", {Value()}),
            "-[Kitten purr:]: unrecognized selector sent to instance");
  EXPECT_EQ(failure(rt.getClass("Cat"), "purr", {}), "+[Cat purr]: unrecognized selector sent to class");
  EXPECT_THROW(rt.send(str("text"), "speak", {}), UnrecognizedSelector);
  EXPECT_TRUE(rt.send(Value(), "speak", {}).isNil());
  EXPECT_TRUE(rt.send(Value(), "purr", {}).isNil());
}

}  // namespace
}  // namespace hushwall::linux_platform
