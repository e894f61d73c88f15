// The chat purge inside a WhatsApp process: chats found through the
// messenger's own message database are deleted before the app handles its
// move to the background or its end.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "messenger/whatsapp_test_process.h"
#include "simhost/host_log.h"

namespace hushwall::testing {
namespace {

using host::Value;
using simhost::hostLog;
using Chats = std::set<std::string>;

constexpr char kChatStorage[] =
    "/var/mobile/Applications/net.whatsapp.WhatsApp/Documents/ChatStorage.sqlite";

// The chats the app still held when its own background handler ran.
Chats chatsSeenByApp;
host::IMP hostBackground = nullptr;
Value recordBackground(const Value& self, const host::Selector& cmd, const host::Args& args) {
  chatsSeenByApp = hostLog().chats;
  return hostBackground(self, cmd, args);
}
void underTheHook(simhost::SimulatedApp& app) {
  app.runtime().hookMessage(app.runtime().getClass("WhatsAppAppDelegate"),
                            "applicationDidEnterBackground:", recordBackground, &hostBackground);
}

void background(simhost::SimulatedApp& app, const Value& delegate) {
  app.send(delegate, "applicationDidEnterBackground:", {app.make("NSObject")});
}

class ChatPurgeTest : public ::testing::Test {
 protected:
  void SetUp() override { device.installDatabase(); }
  TestDevice device;
};

TEST_F(ChatPurgeTest, SwitchedOffNothingIsDeleted) {
  device.addToBlacklist("612345678");
  device.writeFlags({{"DeleteMessages", false}});
  device.writeChatStorage({{"34612345678@s.whatsapp.net", ""}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) {
    hostLog().chats = {"34612345678@s.whatsapp.net"};
    Value delegate = app.make("WhatsAppAppDelegate");
    background(app, delegate);
    app.send(delegate, "applicationWillTerminate:", {Value()});
    EXPECT_EQ(hostLog().backgrounded, 1);
    EXPECT_EQ(hostLog().terminated, 1);
    EXPECT_EQ(hostLog().chats, Chats{"34612345678@s.whatsapp.net"});
    EXPECT_EQ(hostLog().refreshes, 0);
  });
}

TEST_F(ChatPurgeTest, EveryChatOfABlacklistedNumberGoesOnceBeforeTheAppHandlesTheEvent) {
  // No settings file: the purge is on by default.
  device.addToBlacklist("6123");  // short: part of two numbers
  device.addToBlacklist("612345678");
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) {
    const Chats others{"34700000000@s.whatsapp.net", "34800000000@s.whatsapp.net"};
    hostLog().chats = others;
    hostLog().chats.insert({"34612345678@s.whatsapp.net", "34612399999@s.whatsapp.net"});
    Value delegate = app.make("WhatsAppAppDelegate");

    // Before the messenger has a message database nothing can be found, and
    // none is made.
    background(app, delegate);
    EXPECT_EQ(hostLog().chats.size(), 4u);
    EXPECT_FALSE(std::filesystem::exists(device.native(kChatStorage)));

    device.writeChatStorage({{"34612345678@s.whatsapp.net", ""},
                             {"34612345678@s.whatsapp.net", ""},
                             {"", "34612345678@s.whatsapp.net"},
                             {"34700000000@s.whatsapp.net", "34612399999@s.whatsapp.net"},
                             {"34800000000@s.whatsapp.net", std::nullopt}});
    background(app, delegate);
    EXPECT_EQ(hostLog().chats, others);
    EXPECT_EQ(chatsSeenByApp, others);
    // One refresh per deleted chat: the repeats and the second entry's find
    // of the same chat delete nothing.
    EXPECT_EQ(hostLog().refreshes, 2);
    EXPECT_EQ(hostLog().backgrounded, 2);

    hostLog().chats.insert("34612345678@s.whatsapp.net");
    app.send(delegate, "applicationWillTerminate:", {Value()});
    EXPECT_EQ(hostLog().chats, others);
    EXPECT_EQ(hostLog().refreshes, 3);
    EXPECT_EQ(hostLog().terminated, 1);
  }, underTheHook);
}

}  // namespace
}  // namespace hushwall::testing
