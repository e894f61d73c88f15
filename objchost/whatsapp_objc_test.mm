// The device adapter inside an Objective-C WhatsApp: the hooks are
// installed on the messenger's classes by name, hand on to the messenger's
// own code, read its objects correctly, and take the same decisions as the
// simulated device on the same inputs.
#import "objchost/whatsapp_classes.h"

#include <gtest/gtest.h>
#include <objc/runtime.h>

#include <filesystem>
#include <sstream>

#include "objchost/objc_app.h"
#include "objchost/objc_host_log.h"
#include "objchost/two_hosts.h"
#include "platform/gnustep/stand_in_device.h"
#include "platform/linux/vcard_address_book.h"
#include "testing/child_process.h"

namespace hushwall::objchost {
namespace {

using testing::TestDevice;

constexpr char kBlocked[] = "34612345678@s.whatsapp.net";  // covered by "612345678"
constexpr char kClean[] = "34699000000@s.whatsapp.net";

// A saved picture's file name holds the time it was saved; the rest of the
// path must agree.
std::string pictureFolderOf(const std::optional<std::string>& path) {
  if (!path) return "NULL";
  return path->substr(0, path->rfind('/') + 1) + "..." + path->substr(path->rfind('.'));
}

std::string rowsOf(const std::vector<testing::HistoryRow>& rows) {
  std::ostringstream out;
  out.precision(17);
  for (const auto& r : rows) {
    out << r.phoneNumber.value_or("NULL") << "|" << r.name.value_or("NULL") << "|"
        << r.message.value_or("NULL") << "|" << r.date.value_or(-1) << "|"
        << r.blockType.value_or(-1) << "|" << r.mediaType.value_or(-1) << "|"
        << (r.mediaFileName && !r.mediaFileName->empty() ? pictureFolderOf(r.mediaFileName)
                                                         : r.mediaFileName.value_or("NULL")) << "|" << r.mediaURL.value_or("NULL") << "|"
        << r.isMine.value_or(-1) << "\n";
  }
  return out.str();
}

std::string blacklistOf(const TestDevice& device) {
  std::string all;
  for (const auto& row : device.blacklist()) {
    all += row.name.value_or("NULL") + "=" + row.phoneNumber.value_or("NULL") + ";";
  }
  return all;
}

// Two devices set up alike: one for the simulated app, one for this app.
class TwoDevices : public ::testing::Test {
 protected:
  template <typename Setup>
  void prepare(Setup setup) {
    for (TestDevice* device : {&simulated, &objc}) {
      device->installDatabase();
      setup(*device);
    }
  }
  // Runs the script in both and checks that they agree; returns the log.
  Log runBoth(const WhatsAppScript& script) {
    const Log expected = runSimulatedWhatsApp(simulated, script);
    const Log actual = runObjcWhatsApp(objc, script);
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(rowsOf(objc.history()), rowsOf(simulated.history()));
    EXPECT_EQ(blacklistOf(objc), blacklistOf(simulated));
    return actual;
  }
  TestDevice simulated;
  TestDevice objc;
};

bool contains(const Log& log, const std::string& line) {
  return std::find(log.begin(), log.end(), line) != log.end();
}

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

TEST_F(TwoDevices, IncomingBatchIsSplitRecordedAndSignalledAlike) {
  prepare([](TestDevice& d) {
    d.addToBlacklist("612345678");
    d.writeFlags({{"Enabled", true}, {"Vibrate", true}, {"ShowStatusbarIcon", true}});
  });
  const Log log = runBoth([](WhatsAppDriver& app) {
    app.deliver({{"b1", kBlocked, "hi", "Ann", 1400000100.75, std::nullopt},
                 {"p1", kClean, "yo", "Bo", 1400000101.0, std::nullopt},
                 {"b2", kBlocked, "look", "Ann", 1400000102.0,
                  PictureInput{1, "https://mms/1", {0xff, 0xd8, 0x01}}}});
    // A repeat of b1 and a voice note: blocked, not recorded, no buzz.
    app.deliver({{"b3", kBlocked, "hi", "Ann", 1400000100.75, std::nullopt},
                 {"b4", kBlocked, std::nullopt, "Ann", 1400000104.0,
                  PictureInput{2, "https://mms/2", {1}}}});
    // A stanza without a nickname: its record stops at the phone number.
    app.deliver({{"b5", kBlocked, "late", std::nullopt, 1400000105.0, std::nullopt}});
  });
  EXPECT_TRUE(contains(log, "delivered [p1]"));
  EXPECT_TRUE(contains(log, "receipts [b1,b2]"));
  EXPECT_TRUE(contains(log, "receipts [b3,b4]"));
  EXPECT_TRUE(contains(log, "receipts [b5]"));
  EXPECT_EQ(std::count_if(log.begin(), log.end(),
                          [](const std::string& l) { return l.rfind("delivered", 0) == 0; }),
            1);
  EXPECT_TRUE(contains(log, "vibrations 2"));
  EXPECT_EQ(objc.history().size(), 3u);
  EXPECT_TRUE(std::filesystem::exists(
      objc.native("/var/mobile/Library/Preferences/Hushwall/34612345678")));
}

TEST_F(TwoDevices, OutgoingTextsToBlacklistedNumbersAreRecordedAlike) {
  prepare([](TestDevice& d) { d.addToBlacklist("612345678"); });
  const Log log = runBoth([](WhatsAppDriver& app) {
    app.send({"m1", kBlocked, "sorry", 0, 1400000200.5});
    app.send({"m2", kClean, "hello", 0, 1400000201.0});
    app.send({"m3", kBlocked, "a picture", 1, 1400000202.0});
  });
  EXPECT_TRUE(contains(log, "sent m1"));
  EXPECT_TRUE(contains(log, "sent m3"));
  ASSERT_EQ(objc.history().size(), 1u);
  EXPECT_EQ(objc.history()[0].name, "Me");
  EXPECT_EQ(objc.history()[0].date, 1400000200.5);
}

TEST_F(TwoDevices, ChatListButtonAddsAndRemovesAlike) {
  prepare([](TestDevice& d) { d.writeFlags({{"Enabled", true}, {"ActionButton", true}}); });
  const Log log = runBoth([](WhatsAppDriver& app) {
    app.openOptions(kClean, "Bo");
    app.actionSheet("Options");
    app.tapSheetButton("Add to Blacklist");
    app.actionSheet("Other");  // only the sheet right after the noted chat
    app.answerAlert(1);
    app.settle();  // the blacklist is reloaded from the table
    app.openOptions(kClean, "Bo");
    app.actionSheet("Options");
    app.tapSheetButton("Remove from Blacklist");
    app.answerAlert(0);  // "No": nothing changes
    app.openOptions(std::string("34611111111@s.whatsapp.net"), std::nullopt);
    app.actionSheet("Options");
    app.tapSheetButton("Add to Blacklist");
    app.answerAlert(1);
  });
  EXPECT_TRUE(contains(log, "sheet Options [Add to Blacklist]"));
  EXPECT_TRUE(contains(log, "sheet Other []"));
  EXPECT_TRUE(contains(log, "sheet Options [Remove from Blacklist]"));
  EXPECT_TRUE(contains(log, "alert Hushwall | Would you like to blacklist Bo (34699000000) ? | "
                            "[No,Yes] | 989898"));
  EXPECT_TRUE(contains(log, "alert Hushwall | Would you like to blacklist Anonymous "
                            "(34611111111) ? | [No,Yes] | 989898"));
  EXPECT_EQ(blacklistOf(objc), "Bo=34699000000;Anonymous=34611111111;");
}

TEST_F(TwoDevices, ContactsOnlyAsksTheAddressBookAlike) {
  prepare([](TestDevice& d) {
    d.writeFlags({{"Enabled", true}, {"ContactsOnly", true}});
    std::filesystem::create_directories(
        std::filesystem::path(d.native(linux_platform::kContactsVCardPath)).parent_path());
    linux_platform::writeContactsVCard(d.native(linux_platform::kContactsVCardPath),
                                       {"+34 699 00 00 00"});
  });
  const Log log = runBoth([](WhatsAppDriver& app) {
    app.deliver({{"friend", kClean, "hi", "Bo", 1400000300.0, std::nullopt},
                 {"stranger", kBlocked, "buy", "Spam", 1400000301.0, std::nullopt}});
  });
  EXPECT_TRUE(contains(log, "delivered [friend]"));
  EXPECT_TRUE(contains(log, "receipts [stranger]"));
}

TEST_F(TwoDevices, PurgeDeletesTheSameChatsThroughTheMessengersStorageAlike) {
  const std::string group = "34612345678-1400000000@g.us";
  const std::string quiet = "34600000000@s.whatsapp.net";  // a chat without messages
  prepare([&](TestDevice& d) {
    // The second entry finds the same chats as the first: each is deleted once.
    d.addToBlacklist("612345678");
    d.addToBlacklist("4612345678");
    d.writeFlags({{"DeleteMessages", true}});
    d.writeChatStorage({{kBlocked, std::nullopt},
                        {kBlocked, std::nullopt},
                        {std::nullopt, kBlocked},
                        {group, kBlocked},  // the recipient column wins
                        {kClean, std::nullopt},
                        {std::nullopt, kClean}});
  });
  const Log log = runBoth([&](WhatsAppDriver& app) {
    app.holdChats({kBlocked, kClean, group, quiet});
    app.background();
    app.holdChats({kBlocked});  // a new chat lives until the next purge
    app.terminate();
  });
  const std::string left = "chats [" + std::string(quiet) + "," + kClean + "]";
  EXPECT_TRUE(contains(log, left + " refreshes 2 backgrounded 1 terminated 0"));
  EXPECT_TRUE(contains(log, left + " refreshes 3 backgrounded 1 terminated 1"));
}

}  // namespace
}  // namespace hushwall::objchost
