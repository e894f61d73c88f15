// The device adapter inside an Objective-C WhatsApp: the hooks are
// installed on the messenger's classes by name and hand on to the
// messenger's own code. That both devices take the same decisions is for the
// scenario files, played on both (objchost/both_devices_test.cpp).
#import "objchost/whatsapp_classes.h"

#include <gtest/gtest.h>
#include <objc/runtime.h>

#include "objchost/objc_app.h"
#include "objchost/objc_host_log.h"
#include "platform/gnustep/stand_in_device.h"
#include "simhost/test_device.h"

namespace hushwall::objchost {
namespace {

using testing::TestDevice;

TEST(ObjcWhatsAppHooks, InstalledByNameAndTheirOriginalsRun) {
  TestDevice device;
  device.installDatabase();
  device.writeFlags({{"Enabled", false}});
  inObjcProcess([&] {
    gnustep::bootDevice(device.root());
    Class connection = objc_getClass("XMPPConnection");
    Class delegate = objc_getClass("WhatsAppAppDelegate");
    Class sheetMeta = object_getClass(objc_getClass("WABlockBasedActionSheet"));
    SEL incoming = @selector(processIncomingMessageStanzas:);
    SEL sheet = @selector(actionSheetWithTitle:);
    IMP hostIncoming = class_getMethodImplementation(connection, incoming);
    IMP hostSheet = class_getMethodImplementation(sheetMeta, sheet);
    ASSERT_FALSE([delegate instancesRespondToSelector:@selector(deleteAllMessagesBlacklisted)]);

    injectTweak();

    EXPECT_NE(class_getMethodImplementation(connection, incoming), hostIncoming);
    EXPECT_NE(class_getMethodImplementation(sheetMeta, sheet), hostSheet);
    // The two methods the tweak adds, with the type encodings it gives them.
    Method purge = class_getInstanceMethod(delegate, @selector(deleteAllMessagesBlacklisted));
    Method sessions = class_getInstanceMethod(delegate, @selector(getSessionsWithPhoneNumber:));
    ASSERT_NE(purge, nullptr);
    ASSERT_NE(sessions, nullptr);
    EXPECT_STREQ(method_getTypeEncoding(purge), "v@:");
    EXPECT_STREQ(method_getTypeEncoding(sessions), "@@:@");

    // Switched off, the messenger's own code receives the very array.
    XMPPConnection* host = [[[XMPPConnection alloc] init] autorelease];
    NSArray* batch = [NSArray arrayWithObject:[[[XMPPMessageStanza alloc] init] autorelease]];
    [host processIncomingMessageStanzas:batch];
    EXPECT_EQ(objcHostLog().lastBatch, (const void*)batch);
    // A class method's hook hands back what the original made.
    id made = [WABlockBasedActionSheet actionSheetWithTitle:@"t"];
    EXPECT_TRUE([made isKindOfClass:[WABlockBasedActionSheet class]]);
    EXPECT_EQ(objcHostLog().sheets.size(), 1u);
  });
}

}  // namespace
}  // namespace hushwall::objchost
