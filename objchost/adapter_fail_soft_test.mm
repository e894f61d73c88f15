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
#include <string>

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

// The host's class (a hook stays installed for the process: each case
// hooks a subclass of its own).
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

namespace hushwall::darwin {
namespace {

using host::Args;
using host::Selector;
using host::Value;

// What every replacement here shares: how often it ran, and the slot it
// hands the call on through.
int replacementRuns = 0;
host::IMP originalTake = nullptr;

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
  void SetUp() override { pool = [[NSAutoreleasePool alloc] init]; }
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

// Whatever the replacement does, or cannot do, the host's own method runs
// once with what the host sent, and answers the host.
TEST_F(FailSoft, TheHostGetsItsCallOnceWhateverTheReplacementDoes) {
  // The stand-in of this process has Substrate's function, found by name
  // as on the phone; a phone without it gets a runtime without one.
  ASSERT_NE(substrateHookMessage(), nullptr);
  HWUnreadableText* unreadable = [[[HWUnreadableText alloc] init] autorelease];
  struct Case {
    const char* what;
    const char* selector;
    host::IMP replacement;
    id argument;
    int replacementRuns;
    bool sameObject;  // the host gets the very object, not a converted copy
    bool substrate = true;
  };
  const Case cases[] = {
      {"an argument it cannot convert", "take:", &handOn, unreadable, 0, true},
      {"one deep inside a collection", "take:", &handOn, @{@"userInfo" : @[ @"x", unreadable ]}, 0, true},
      {"what it can convert", "take:", &handOn, @"plain", 1, false},
      {"an exception before handing on", "take:", &raiseBeforeHandingOn, @"stanza", 1, true},
      {"a C++ exception before handing on", "answer:", &raiseInCxxBeforeAnswering, @"stanza", 1, true},
      {"an exception after handing on", "take:", &raiseAfterHandingOn, @"stanza", 1, false},
      {"no Substrate: no hook", "take:", &handOn, @"x", 0, true, false},
  };
  int n = 0;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Class cls = objc_allocateClassPair([HWHostBase class], ("HWHost" + std::to_string(n++)).c_str(), 0);
    objc_registerClassPair(cls);
    SEL selector = sel_registerName(c.selector);
    IMP before = class_getMethodImplementation(cls, selector);
    originalTake = nullptr;
    replacementRuns = 0;
    ObjcRuntime(c.substrate ? substrateHookMessage() : nullptr)
        .hookMessage(classValue(cls), c.selector, c.replacement, &originalTake);
    EXPECT_EQ(originalTake != nullptr, c.substrate);
    EXPECT_EQ(class_getMethodImplementation(cls, selector) != before, c.substrate);
    HWHostBase* host = [[[cls alloc] init] autorelease];
    id answer = nil;
    fromTheHost([&] {
      if (selector == @selector(answer:)) answer = [host answer:c.argument];
      else [host take:c.argument];
    });
    EXPECT_EQ(replacementRuns, c.replacementRuns);
    EXPECT_EQ(host->calls, 1);
    EXPECT_TRUE(c.sameObject ? host->received == c.argument : [host->received isEqual:c.argument]);
    if (selector == @selector(answer:)) EXPECT_TRUE([answer isEqual:@"host's answer"]);
  }
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
