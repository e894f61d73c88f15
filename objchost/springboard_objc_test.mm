// The device adapter inside an Objective-C SpringBoard of each firmware
// generation: the bulletin and badge hooks are installed on the methods that
// generation's classes have, by name, and hand on the very objects and feed
// they were given. That both devices take the same decisions on every
// generation is for the scenario files, played on both
// (objchost/both_devices_test.cpp).
#import "objchost/springboard_classes.h"

#include <gtest/gtest.h>
#include <objc/runtime.h>

#include <algorithm>

#include "objchost/objc_app.h"
#include "objchost/objc_host_log.h"
#include "objchost/springboard_firmware.h"
#include "platform/gnustep/stand_in_device.h"
#include "simhost/test_device.h"

namespace hushwall::objchost {
namespace {

using testing::TestDevice;

// Every test runs on each firmware generation's SpringBoard, named by the
// first version of each.
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
INSTANTIATE_TEST_SUITE_P(Firmware, ObjcSpringBoardHooks, ::testing::ValuesIn(generations()),
                         testNameOf);

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

}  // namespace
}  // namespace hushwall::objchost
