// The device adapter inside an Objective-C SpringBoard: the bulletin and
// badge hooks are installed on SpringBoard's classes by name and hand on the
// very objects and feed they were given. That both devices take the same
// decisions is for the scenario files, played on both
// (objchost/both_devices_test.cpp).
#import "objchost/springboard_classes.h"

#include <gtest/gtest.h>
#include <objc/runtime.h>

#include "objchost/objc_app.h"
#include "objchost/objc_host_log.h"
#include "platform/gnustep/stand_in_device.h"
#include "simhost/test_device.h"

namespace hushwall::objchost {
namespace {

using testing::TestDevice;

constexpr char kBlockedJid[] = "34612345678@s.whatsapp.net";  // covered by "612345678"
constexpr char kCleanJid[] = "34699000000@s.whatsapp.net";
// The feed SpringBoard hands with every bulletin: above 2^31, so that an
// argument passed with the wrong width or sign arrives as another number.
constexpr std::uint32_t kFeed = 0xFEEDFACEu;

TEST(ObjcSpringBoardHooks, InstalledByNameAndHandOnTheVeryArguments) {
  TestDevice device;
  device.installDatabase();
  device.writeFlags({{"Enabled", false}});
  inObjcProcess([&] {
    gnustep::bootDevice(device.root());
    SEL addBulletin = @selector(observer:addBulletin:forFeed:);
    Class controllers[] = {objc_getClass("SBBulletinBannerController"),
                           objc_getClass("SBLockScreenNotificationListController"),
                           objc_getClass("SBBulletinObserverViewController")};
    IMP before[3];
    for (int i = 0; i < 3; ++i)
      before[i] = class_getMethodImplementation(controllers[i], addBulletin);
    Class application = objc_getClass("SBApplication");
    IMP setBadge = class_getMethodImplementation(application, @selector(setBadge:));
    SEL increment = @selector(addManualBadgeIncrementForBundleIdentifier:);
    ASSERT_FALSE([controllers[0] instancesRespondToSelector:increment]);

    injectTweak();

    // Each controller gets its own replacement of the one shared selector.
    for (int i = 0; i < 3; ++i) {
      EXPECT_NE(class_getMethodImplementation(controllers[i], addBulletin), before[i]) << i;
    }
    EXPECT_NE(class_getMethodImplementation(application, @selector(setBadge:)), setBadge);
    Method added = class_getInstanceMethod(controllers[0], increment);
    ASSERT_NE(added, nullptr);
    EXPECT_STREQ(method_getTypeEncoding(added), "v@:@");
    EXPECT_FALSE([controllers[1] instancesRespondToSelector:increment]);

    // Switched off, every controller's own code gets what it was handed.
    BBBulletin* bulletin = [[[BBBulletin alloc] init] autorelease];
    [bulletin setSectionID:@"net.whatsapp.WhatsApp"];
    id observer = [[[NSObject alloc] init] autorelease];
    for (Class cls : controllers) {
      [[[[cls alloc] init] autorelease] observer:observer addBulletin:bulletin forFeed:kFeed];
    }
    ASSERT_EQ(objcHostLog().shown.size(), 3u);
    for (const auto& shown : objcHostLog().shown) {
      EXPECT_EQ(shown.observer, (const void*)observer) << shown.where;
      EXPECT_EQ(shown.bulletin, (const void*)bulletin) << shown.where;
      EXPECT_EQ(shown.feed, kFeed) << shown.where;
    }
    SBApplication* messenger = [[[SBApplication alloc] init] autorelease];
    [messenger setBundleIdentifier:@"net.whatsapp.WhatsApp"];
    NSNumber* five = [NSNumber numberWithInt:5];
    [messenger setBadge:five];
    EXPECT_EQ([messenger badgeNumberOrString], five);
  });
}

TEST(ObjcSpringBoardHooks, TheLongerMethodOfIOS82IsJudgedAsTheFirstAndHandsOnEveryArgument) {
  TestDevice device;
  device.installDatabase();
  device.addToBlacklist("612345678");
  device.writeFlags({{"Enabled", true}});
  inObjcProcess([&] {
    gnustep::bootDevice(device.root());
    injectTweak();
    id observer = [[[NSObject alloc] init] autorelease];
    // Stands for the reply block; the adapter hands on whatever it got.
    id reply = [[[NSObject alloc] init] autorelease];
    auto deliver = [&](const char* jid) {
      BBBulletin* bulletin = [[[BBBulletin alloc] init] autorelease];
      [bulletin setSectionID:@"net.whatsapp.WhatsApp"];
      [bulletin setMessage:@"Alice: hi"];
      [bulletin setContext:@{
        @"notificationType" : @"AppNotificationLocal",
        @"userInfo" : @{@"jid" : [NSString stringWithUTF8String:jid]}
      }];
      for (Class cls : {objc_getClass("SBBulletinBannerController"),
                        objc_getClass("SBLockScreenNotificationListController")}) {
        [[[[cls alloc] init] autorelease] observer:observer
                                       addBulletin:bulletin
                                           forFeed:kFeed
                               playLightsAndSirens:YES
                                         withReply:reply];
      }
      return bulletin;
    };
    deliver(kBlockedJid);
    EXPECT_TRUE(objcHostLog().shown.empty());
    BBBulletin* allowed = deliver(kCleanJid);
    ASSERT_EQ(objcHostLog().shown.size(), 2u);
    for (const auto& shown : objcHostLog().shown) {
      EXPECT_TRUE(shown.withReply) << shown.where;
      EXPECT_EQ(shown.observer, (const void*)observer) << shown.where;
      EXPECT_EQ(shown.bulletin, (const void*)allowed) << shown.where;
      EXPECT_EQ(shown.feed, kFeed) << shown.where;
      EXPECT_TRUE(shown.playLightsAndSirens) << shown.where;
      EXPECT_EQ(shown.reply, (const void*)reply) << shown.where;
    }
  });
}

}  // namespace
}  // namespace hushwall::objchost
