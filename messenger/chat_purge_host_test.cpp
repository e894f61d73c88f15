// The chat purge inside a WhatsApp process: chats found through the
// messenger's own message database are deleted before the app handles its
// move to the background or its end.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <set>
#include <stdexcept>

#include "messenger/whatsapp_test_process.h"
#include "simhost/host_log.h"

namespace hushwall::testing {
namespace {

using host::Value;
using simhost::hostLog;
using Chats = std::set<std::string>;

constexpr char kChatStorage[] =
    "/var/mobile/Applications/net.whatsapp.WhatsApp/Documents/ChatStorage.sqlite";

// The messenger's message database with one row per (to, from) pair.
using MessageRows = std::vector<std::pair<const char*, const char*>>;  // to, from (null: NULL)

void writeChatStorage(const TestDevice& device, const MessageRows& rows) {
  std::string path = device.native(kChatStorage);
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  std::string sql = "CREATE TABLE ZWAMESSAGE (ZTOJID TEXT, ZFROMJID TEXT);";
  for (const auto& [to, from] : rows) {
    auto quoted = [](const char* s) { return s ? "'" + std::string(s) + "'" : "NULL"; };
    sql += "INSERT INTO ZWAMESSAGE VALUES (" + quoted(to) + ", " + quoted(from) + ");";
  }
  int result = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr);
  sqlite3_close(db);
  if (result != SQLITE_OK) throw std::runtime_error("cannot write " + path);
}

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
  writeChatStorage(device, {{"34612345678@s.whatsapp.net", ""}});
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

    writeChatStorage(device, {{"34612345678@s.whatsapp.net", ""},
                              {"34612345678@s.whatsapp.net", ""},
                              {"", "34612345678@s.whatsapp.net"},
                              {"34700000000@s.whatsapp.net", "34612399999@s.whatsapp.net"},
                              {"34800000000@s.whatsapp.net", nullptr}});
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
