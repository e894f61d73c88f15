// The device adapter inside an Objective-C SpringBoard of each firmware
// generation: the bulletin and badge hooks are installed on SpringBoard's
// classes by name, hand on the very objects and feed they were given, read
// bulletins and badges correctly, and take the same decisions as the
// simulated device.
#import "objchost/springboard_classes.h"

#include <gtest/gtest.h>
#include <objc/runtime.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <sstream>

#include "objchost/objc_app.h"
#include "objchost/objc_host_log.h"
#include "objchost/springboard_firmware.h"
#include "objchost/two_hosts.h"
#include "platform/gnustep/stand_in_device.h"
#include "simhost/test_springboard.h"

namespace hushwall::objchost {
namespace {

using host::T;
using host::Value;
using testing::localContext;
using testing::remoteContext;
using testing::TestDevice;

constexpr char kMessenger[] = "net.whatsapp.WhatsApp";
constexpr char kBlockedJid[] = "34612345678@s.whatsapp.net";  // covered by "612345678"
constexpr char kCleanJid[] = "34699000000@s.whatsapp.net";
constexpr char kAdd[] = "com.Corvanta.HushwallSettings.addStatusBarIcon";
constexpr char kRemove[] = "com.Corvanta.HushwallSettings.removeStatusBarIcon";

// The history as both hosts must have written it. A banner's record is
// dated when it arrived, so a date of the last minutes is written as such.
std::string rowsOf(const std::vector<testing::HistoryRow>& rows) {
  const double now = static_cast<double>(std::time(nullptr));
  std::ostringstream out;
  for (const auto& r : rows) {
    const double date = r.date.value_or(-1);
    out << r.phoneNumber.value_or("NULL") << "|" << r.name.value_or("NULL") << "|"
        << r.message.value_or("NULL") << "|"
        << (std::fabs(now - date) < 600 ? std::string("recent") : std::to_string(date)) << "|"
        << r.blockType.value_or(-1) << "|" << r.mediaType.value_or(-1) << "|"
        << r.mediaFileName.value_or("NULL") << "|" << r.mediaURL.value_or("NULL") << "|"
        << r.isMine.value_or(-1) << "\n";
  }
  return out.str();
}

bool contains(const Log& log, const std::string& line) {
  return std::find(log.begin(), log.end(), line) != log.end();
}

int countOf(const Log& log, const std::string& line) {
  return static_cast<int>(std::count(log.begin(), log.end(), line));
}

Value text(const std::string& utf8, Value::StringClass cls = Value::StringClass::kBase) {
  return Value::string(T(utf8), cls);
}

// Every test runs on each firmware generation's SpringBoard, named by the
// first version of each as runObjcSpringBoard takes it.
std::vector<std::string> generations() {
  std::vector<std::string> versions;
  for (std::size_t i = 0; i < kFirmwareProfileCount; ++i) {
    versions.push_back(kFirmwareProfiles[i].version);
  }
  return versions;
}
std::string testNameOf(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = "iOS" + info.param;
  std::replace(name.begin(), name.end(), '.', '_');
  return name;
}
class ObjcSpringBoardHooks : public ::testing::TestWithParam<std::string> {};
class TwoSpringBoards : public ::testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Firmware, ObjcSpringBoardHooks, ::testing::ValuesIn(generations()),
                         testNameOf);
INSTANTIATE_TEST_SUITE_P(Firmware, TwoSpringBoards, ::testing::ValuesIn(generations()),
                         testNameOf);

// Two devices set up alike: one for the simulated SpringBoard, one for
// this app on the firmware given, each with the blacklist holding "612345678".
struct SpringBoardPair {
  template <typename Setup>
  SpringBoardPair(std::string firmware, Setup setup) : firmware(std::move(firmware)) {
    for (TestDevice* device : {&simulated, &objc}) {
      device->installDatabase();
      device->installSettingsBundle();
      device->addToBlacklist("612345678");
      setup(*device);
    }
  }
  // Runs the script in both and checks that they agree; returns the log.
  Log runBoth(const Value& messengerBadge, const SpringBoardScript& script) {
    const Log expected = runSimulatedSpringBoard(simulated, messengerBadge, script);
    const Log actual = runObjcSpringBoard(objc, messengerBadge, script, firmware);
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(rowsOf(objc.history()), rowsOf(simulated.history()));
    return actual;
  }
  std::string firmware;
  TestDevice simulated;
  TestDevice objc;
};

// Each hook lands on the bulletin method the firmware's controller has (so
// its types have a shape), the badge increment is added to the banner, and
// the controller asked for applications by identifier answers an array on
// every firmware: with its own method on iOS 7, the adapter's from iOS 8.
TEST_P(ObjcSpringBoardHooks, InstalledOnTheFirmwaresMethodsAndHandOnTheVeryArguments) {
  TestDevice device;
  device.installDatabase();
  device.writeFlags({{"Enabled", false}});
  inObjcProcess([&] {
    gnustep::bootDevice(device.root());
    installSpringBoardFirmware(GetParam());
    SEL longer = @selector(observer:addBulletin:forFeed:playLightsAndSirens:withReply:);
    Class controllers[] = {objc_getClass("SBBulletinBannerController"),
                           objc_getClass("SBLockScreenNotificationListController"),
                           objc_getClass("SBBulletinObserverViewController")};
    SEL own[3];
    IMP before[3];
    for (int i = 0; i < 3; ++i) {
      own[i] = [controllers[i] instancesRespondToSelector:longer]
                   ? longer
                   : @selector(observer:addBulletin:forFeed:);
      ASSERT_TRUE([controllers[i] instancesRespondToSelector:own[i]]) << i;
      before[i] = class_getMethodImplementation(controllers[i], own[i]);
    }
    Class application = objc_getClass("SBApplication");
    IMP setBadge = class_getMethodImplementation(application, @selector(setBadge:));
    SEL increment = @selector(addManualBadgeIncrementForBundleIdentifier:);
    ASSERT_FALSE([controllers[0] instancesRespondToSelector:increment]);
    Class applications = objc_getClass("SBApplicationController");
    SEL plural = @selector(applicationsWithBundleIdentifier:);
    Method ownPlural = class_getInstanceMethod(applications, plural);
    IMP ownPluralImp = ownPlural != nullptr ? method_getImplementation(ownPlural) : nullptr;

    injectTweak();

    for (int i = 0; i < 3; ++i) {
      EXPECT_NE(class_getMethodImplementation(controllers[i], own[i]), before[i]) << i;
    }
    EXPECT_NE(class_getMethodImplementation(application, @selector(setBadge:)), setBadge);
    Method added = class_getInstanceMethod(controllers[0], increment);
    ASSERT_NE(added, nullptr);
    EXPECT_STREQ(method_getTypeEncoding(added), "v@:@");
    EXPECT_FALSE([controllers[1] instancesRespondToSelector:increment]);
    if (ownPluralImp != nullptr) {
      EXPECT_EQ(class_getMethodImplementation(applications, plural), ownPluralImp);
    }
    SBApplication* messenger = [[[SBApplication alloc] init] autorelease];
    [messenger setBundleIdentifier:@"net.whatsapp.WhatsApp"];
    [SBApplicationController addApplication:messenger];
    id controller = [SBApplicationController sharedInstance];
    NSArray* found = [controller applicationsWithBundleIdentifier:@"net.whatsapp.WhatsApp"];
    EXPECT_TRUE(found != nil && [found count] == 1 && [found objectAtIndex:0] == messenger);
    found = [controller applicationsWithBundleIdentifier:@"com.apple.MobileSMS"];
    EXPECT_TRUE(found != nil && [found count] == 0);

    // Switched off, every controller's own code gets what it was handed.
    BBBulletin* bulletin = [[[BBBulletin alloc] init] autorelease];
    [bulletin setSectionID:@"net.whatsapp.WhatsApp"];
    id observer = [[[NSObject alloc] init] autorelease];
    id reply = [[[NSObject alloc] init] autorelease];
    for (Class cls : controllers) {
      deliverTo([[[cls alloc] init] autorelease], observer, bulletin, reply);
    }
    ASSERT_EQ(objcHostLog().shown.size(), 3u);
    for (const auto& shown : objcHostLog().shown) {
      EXPECT_EQ(shown.observer, (const void*)observer) << shown.where;
      EXPECT_EQ(shown.bulletin, (const void*)bulletin) << shown.where;
      EXPECT_EQ(shown.feed, kFeed) << shown.where;
      if (shown.withReply) {
        EXPECT_TRUE(shown.playLightsAndSirens) << shown.where;
        EXPECT_EQ(shown.reply, (const void*)reply) << shown.where;
      }
    }
    NSNumber* five = [NSNumber numberWithInt:5];
    [messenger setBadge:five];
    EXPECT_EQ([messenger badgeNumberOrString], five);
  });
}

TEST_P(TwoSpringBoards, BlacklistedSendersBulletinsAreDroppedAndRecordedAlike) {
  SpringBoardPair both(GetParam(), [](TestDevice& d) {
    d.writeFlags(
        {{"Enabled", true}, {"SaveHistory", true}, {"ShowStatusbarIcon", true}, {"Vibrate", true}});
  });
  const Log log = both.runBoth(Value::integer(3), [](SpringBoardDriver& sb) {
    sb.deliver(kMessenger, localContext(kBlockedJid), "Ann: hi");
    sb.deliver(kMessenger, localContext(kBlockedJid), "Ann: hi");  // a repeat: no second record
    sb.deliver(kMessenger, localContext(kCleanJid), "Bo: yo");
    sb.deliver(kMessenger, remoteContext("Ann: pushed", std::string("34612345678")), "Ann: pushed");
    // The push's "u" is matched as it stands, domain and all.
    sb.deliver(kMessenger, remoteContext("Ann: domain", std::string(kBlockedJid)), "Ann: domain");
    // No "u": handed on, without a raise, whatever the text says.
    sb.deliver(kMessenger, remoteContext("Ann: no sender", std::nullopt), "Ann: no sender");
    sb.deliver(kMessenger, remoteContext("Bo: pushed", std::string("34699000000")), "Bo: pushed");
    // Another app, even one that differs only in case.
    sb.deliver(std::string("net.whatsapp.whatsapp"), localContext(kBlockedJid), "Ann: hi");
    sb.deliver(std::string("com.apple.MobileSMS"), Value(), "Ann: sms");
    // A local notification without its sender is handed on.
    sb.deliver(kMessenger,
               Value::dictionary({{T("notificationType"), text("AppNotificationLocal")}}),
               "Ann: hi");
  });
  EXPECT_EQ(countOf(log, "shown banner"), 6);
  EXPECT_TRUE(contains(log, "badge int 5"));  // two let through with a readable sender
  EXPECT_FALSE(contains(log, "badge int 6"));
  EXPECT_TRUE(contains(log, "vibrations 3"));
  EXPECT_TRUE(contains(log, "status bar [add HSWL,add HSWL,add HSWL]"));
  EXPECT_EQ(both.objc.history().size(), 3u);
}

TEST_P(TwoSpringBoards, SettingsDecideWhatABlockedBannerLeavesBehindAlike) {
  SpringBoardPair both(GetParam(), [](TestDevice& d) {
    d.writeFlags({{"Enabled", true}, {"SaveHistory", true}, {"ShowStatusbarIcon", false}});
  });
  const Log log = both.runBoth(Value(), [](SpringBoardDriver& sb) {
    // Local kind: the icon flag, not the history flag, decides the record.
    sb.deliver(kMessenger, localContext(kBlockedJid), "Ann: local one");
    sb.deliver(kMessenger, remoteContext("Ann: remote one", std::string("612345678")), "x");
    sb.changeSettings({{"Enabled", true}, {"SaveHistory", false}, {"ShowStatusbarIcon", true}});
    sb.deliver(kMessenger, localContext(kBlockedJid), "Ann: local two");
    sb.deliver(kMessenger, remoteContext("Ann: remote two", std::string("612345678")), "x");
    // Switched off: everything passes and the badge is the messenger's.
    sb.changeSettings({{"Enabled", false}});
    sb.deliver(kMessenger, localContext(kBlockedJid), "Ann: local three");
    sb.messengerSetsBadge(Value::integer(9));
  });
  EXPECT_EQ(countOf(log, "shown lockscreen"), 1);
  EXPECT_TRUE(contains(log, "badge int 9"));
  EXPECT_TRUE(contains(log, "status bar [add HSWL,add HSWL]"));
  EXPECT_EQ(both.objc.history().size(), 2u);
}

TEST_P(TwoSpringBoards, BadgeCountsOnlyWhatWasLetThroughAlike) {
  struct Case {
    Value start;
    std::string afterIncrement;
  };
  const Case cases[] = {
      {Value(), "badge int 1"},
      {Value::integer(3), "badge int 4"},
      // A text of exactly the base class is replaced by 1 whatever it says;
      // one of a subclass is read as a number.
      {text("7"), "badge int 1"},
      {text("7", Value::StringClass::kSubclass), "badge int 8"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(describe(c.start));
    SpringBoardPair both(GetParam(), [](TestDevice& d) { d.writeFlags({{"Enabled", true}}); });
    const Log log = both.runBoth(c.start, [](SpringBoardDriver& sb) {
      sb.deliver(kMessenger, localContext(kCleanJid), "Bo: one");
      sb.messengerSetsBadge(Value::integer(5));  // the pass was used up: dropped
      sb.messengerSetsBadge(text("12"));
      sb.messengerSetsBadge(text("12", Value::StringClass::kSubclass));
      sb.messengerSetsBadge(text("new"));  // reads as 0: passes
      sb.deliver(kMessenger, localContext(kCleanJid), "Bo: two");
      sb.messengerSetsBadge(Value::integer(0));
      sb.messengerSetsBadge(Value());
    });
    ASSERT_GT(log.size(), 7u);
    EXPECT_EQ(log[3], c.afterIncrement);
    EXPECT_EQ(log[4], c.afterIncrement);
    EXPECT_EQ(log[7], "badge string 'new'");
    EXPECT_EQ(log[11], "badge int 1");
    EXPECT_EQ(countOf(log, "shown banner"), 2);
  }
}

TEST_P(TwoSpringBoards, StatusBarIconFollowsOutsideRequestsAlike) {
  // The add request shows the icon whatever the icon flag says.
  SpringBoardPair both(GetParam(), [](TestDevice& d) {
    d.writeFlags({{"Enabled", true}, {"ShowStatusbarIcon", false}});
  });
  const Log log = both.runBoth(Value(), [](SpringBoardDriver& sb) {
    sb.postFromOutside(kAdd);
    sb.postFromOutside(kAdd);
    sb.postFromOutside(kRemove);
    sb.postFromOutside(kRemove);
  });
  EXPECT_TRUE(contains(log, "status bar [add HSWL,add HSWL,remove HSWL,remove HSWL]"));
}

}  // namespace
}  // namespace hushwall::objchost
