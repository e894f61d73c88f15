// The device adapter where the host surprises it, under a real Objective-C
// runtime: an argument it cannot convert, a replacement that raises, a
// message whose types it has no conversion for, a phone without Substrate
// or without the private address-book lookup. In every case the host's
// call goes on as if the tweak were not there, and no exception reaches the
// host.
#import <Foundation/Foundation.h>

#include <gtest/gtest.h>
#include <objc/runtime.h>

#include <stdexcept>

#include "host/text.h"
#include "platform/darwin/device_services.h"
#include "platform/darwin/objc_runtime.h"
#include "platform/darwin/objc_values.h"
#include "platform/darwin/optional_symbols.h"

// A text whose characters cannot be read: converting it raises, as a
// host's own string class might for a reason of its own.
@interface HWUnreadableText : NSString
@end
@implementation HWUnreadableText
- (NSUInteger)length {
  [NSException raise:NSInternalInconsistencyException format:@"unreadable"];
  return 0;
}
- (unichar)characterAtIndex:(NSUInteger)index {
  return 0;
}
@end

// One host class per test: a hook stays installed for the process.
@interface HWHostBase : NSObject {
 @public
  int calls;
  id received;
}
- (void)take:(id)object;
- (id)answer:(id)object;
- (void)takeRange:(NSRange)range;
- (NSRange)range;
@end
@implementation HWHostBase
- (void)take:(id)object {
  ++calls;
  received = object;
}
- (id)answer:(id)object {
  ++calls;
  received = object;
  return @"host's answer";
}
- (void)takeRange:(NSRange)range {
  ++calls;
}
- (NSRange)range {
  ++calls;
  return NSMakeRange(1, 2);
}
@end
@interface HWUnconvertibleHost : HWHostBase
@end
@implementation HWUnconvertibleHost
@end
@interface HWRaisingHost : HWHostBase
@end
@implementation HWRaisingHost
@end
@interface HWRaisingAfterHost : HWHostBase
@end
@implementation HWRaisingAfterHost
@end
@interface HWWithoutSubstrateHost : HWHostBase
@end
@implementation HWWithoutSubstrateHost
@end

namespace hushwall::darwin {
namespace {

using host::Args;
using host::Selector;
using host::Value;

// What every replacement here shares: how often it ran, and the slot it
// hands the call on through.
int replacementRuns = 0;
host::IMP originalTake = nullptr;
host::IMP originalAnswer = nullptr;

Value handOn(const Value& self, const Selector& cmd, const Args& args) {
  ++replacementRuns;
  return originalTake(self, cmd, args);
}

Value raiseBeforeHandingOn(const Value&, const Selector&, const Args&) {
  ++replacementRuns;
  [NSException raise:NSInternalInconsistencyException format:@"a replacement's bug"];
  return Value();
}

Value raiseInCxxBeforeAnswering(const Value&, const Selector&, const Args&) {
  ++replacementRuns;
  throw std::out_of_range("a replacement's bug");
}

Value raiseAfterHandingOn(const Value& self, const Selector& cmd, const Args& args) {
  ++replacementRuns;
  originalTake(self, cmd, args);
  // A message the receiver does not understand raises, as it would for the
  // host; here it comes after the host already had its call.
  ObjcRuntime runtime(substrateHookMessage());
  runtime.send(self, "noSuchSelectorAnywhere", {});
  return Value();
}

struct FailSoft : ::testing::Test {
  void SetUp() override {
    pool = [[NSAutoreleasePool alloc] init];
    replacementRuns = 0;
  }
  void TearDown() override { [pool drain]; }
  // What a message from the host does, with no exception let through.
  template <typename Body>
  void fromTheHost(Body body) {
    @try {
      body();
    } @catch (id exception) {
      ADD_FAILURE() << "an exception reached the host";
    }
  }
  NSAutoreleasePool* pool = nil;
  ObjcRuntime runtime{substrateHookMessage()};
};

TEST_F(FailSoft, ArgumentsTheAdapterCannotConvertReachTheHostUnchanged) {
  runtime.hookMessage(runtime.getClass("HWUnconvertibleHost"), "take:", &handOn, &originalTake);
  ASSERT_NE(originalTake, nullptr);
  HWUnconvertibleHost* host = [[[HWUnconvertibleHost alloc] init] autorelease];
  HWUnreadableText* unreadable = [[[HWUnreadableText alloc] init] autorelease];
  // On its own, and deep inside a collection.
  for (id argument : {(id)unreadable, (id)@{@"userInfo" : @[ @"x", unreadable ]}}) {
    host->calls = 0;
    host->received = nil;
    fromTheHost([&] { [host take:argument]; });
    EXPECT_EQ(host->calls, 1);
    EXPECT_EQ(host->received, argument);
  }
  EXPECT_EQ(replacementRuns, 0);

  // What it can convert still goes through the replacement.
  fromTheHost([&] { [host take:@"plain"]; });
  EXPECT_EQ(replacementRuns, 1);
  EXPECT_EQ(host->calls, 2);
  EXPECT_TRUE([host->received isEqual:@"plain"]);
}

TEST_F(FailSoft, AReplacementThatRaisesBeforeHandingOnHandsOnUnchanged) {
  Value cls = runtime.getClass("HWRaisingHost");
  runtime.hookMessage(cls, "take:", &raiseBeforeHandingOn, &originalTake);
  runtime.hookMessage(cls, "answer:", &raiseInCxxBeforeAnswering, &originalAnswer);
  HWRaisingHost* host = [[[HWRaisingHost alloc] init] autorelease];
  NSString* argument = @"stanza";
  fromTheHost([&] { [host take:argument]; });
  EXPECT_EQ(replacementRuns, 1);
  EXPECT_EQ(host->calls, 1);
  EXPECT_EQ(host->received, argument);
  // A C++ exception likewise, and the host gets its own method's result.
  id answer = nil;
  fromTheHost([&] { answer = [host answer:argument]; });
  EXPECT_EQ(replacementRuns, 2);
  EXPECT_EQ(host->calls, 2);
  EXPECT_TRUE([answer isEqual:@"host's answer"]);
}

TEST_F(FailSoft, AReplacementThatRaisesAfterHandingOnGivesTheHostItsCallOnce) {
  runtime.hookMessage(runtime.getClass("HWRaisingAfterHost"), "take:", &raiseAfterHandingOn,
                      &originalTake);
  HWRaisingAfterHost* host = [[[HWRaisingAfterHost alloc] init] autorelease];
  fromTheHost([&] { [host take:@"stanza"]; });
  EXPECT_EQ(replacementRuns, 1);
  EXPECT_EQ(host->calls, 1);
}

TEST_F(FailSoft, MessagesWithTypesTheAdapterCannotConvertAreNotSentWithMadeUpValues) {
  HWHostBase* host = [[[HWHostBase alloc] init] autorelease];
  const Value receiver = objectValue(host);
  Value result = Value::integer(7);
  // A structure argument: not sent at all, and nothing raised.
  fromTheHost([&] { result = runtime.send(receiver, "takeRange:", {Value::integer(3)}); });
  EXPECT_TRUE(result.isNil());
  EXPECT_EQ(host->calls, 0);
  // A structure result: sent, read as nothing.
  fromTheHost([&] { result = runtime.send(receiver, "range", {}); });
  EXPECT_TRUE(result.isNil());
  EXPECT_EQ(host->calls, 1);
  // What it can convert is sent as ever.
  fromTheHost([&] { result = runtime.send(receiver, "answer:", {Value::string(host::T("q"))}); });
  EXPECT_EQ(result.text(), host::T("host's answer"));
}

TEST_F(FailSoft, WithoutSubstrateNoHookIsInstalledAndTheHostIsUntouched) {
  // The stand-in of this process has Substrate's function, found by name
  // as on the phone; a phone without it gets a runtime without one.
  ASSERT_NE(substrateHookMessage(), nullptr);
  ObjcRuntime withoutSubstrate(nullptr);
  Class cls = [HWWithoutSubstrateHost class];
  IMP before = class_getMethodImplementation(cls, @selector(take:));
  host::IMP slot = nullptr;
  withoutSubstrate.hookMessage(classValue(cls), "take:", &handOn, &slot);
  EXPECT_EQ(slot, nullptr);
  EXPECT_EQ(class_getMethodImplementation(cls, @selector(take:)), before);
  HWWithoutSubstrateHost* host = [[[HWWithoutSubstrateHost alloc] init] autorelease];
  fromTheHost([&] { [host take:@"x"]; });
  EXPECT_EQ(host->calls, 1);
  EXPECT_EQ(replacementRuns, 0);
}

const void* anybody(const void*, const void*, int, int) {
  static int person;
  return &person;
}

TEST_F(FailSoft, WithoutTheAddressBookLookupNobodyIsFound) {
  ASSERT_NE(addressBookFindPerson(), nullptr);  // the stand-in's, found by name
  ContactsAddressBook withoutLookup(nullptr);
  EXPECT_FALSE(withoutLookup.hasPersonMatchingPhoneNumber(host::T("4917012345")));
  // The lookup it is given is what answers.
  ContactsAddressBook withLookup(&anybody);
  EXPECT_TRUE(withLookup.hasPersonMatchingPhoneNumber(host::T("4917012345")));
  EXPECT_FALSE(withLookup.hasPersonMatchingPhoneNumber(std::nullopt));
}

}  // namespace
}  // namespace hushwall::darwin
