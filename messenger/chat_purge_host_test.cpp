// The chat purge inside a WhatsApp process: what the app still holds when
// its own handler runs, and hostile entries and message databases. (What the
// other hooks do is played, with its expected outcome, by the scenario files.)
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <tuple>

#include "messenger/whatsapp_test_process.h"
#include "simhost/host_log.h"
#include "simhost/whatsapp_classes.h"

namespace hushwall::testing {
namespace {

namespace fs = std::filesystem;
using host::Value;
using simhost::hostLog;
using Chats = std::set<std::string>;

constexpr char kChatStorage[] =
    "/var/mobile/Applications/net.whatsapp.WhatsApp/Documents/ChatStorage.sqlite";

std::string contentsOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class MessengerTest : public ::testing::Test {
 protected:
  MessengerTest() { device.installDatabase(); }
  TestDevice device;
};

// The chat purge: chats found through the messenger's own message database
// are deleted before the app handles its move to the background or its end.
// The purge pastes each entry between LIKE wildcards without escaping; it
// must still delete only chats whose JID holds an entry literally, never
// write to the messenger's database, and shrug off a database it cannot use.
// The chats the app still held when its own background handler ran.
Chats chatsSeenByApp;
host::IMP hostBackground = nullptr;
Value recordBackground(const Value& self, const host::Selector& cmd, const host::Args& args) {
  chatsSeenByApp = hostLog().chats;
  return hostBackground(self, cmd, args);
}
void underTheBackgroundHook(simhost::SimulatedApp& app) {
  app.runtime().hookMessage(app.runtime().getClass("WhatsAppAppDelegate"),
                            "applicationDidEnterBackground:", recordBackground, &hostBackground);
}

void background(simhost::SimulatedApp& app, const Value& delegate) {
  app.send(delegate, "applicationDidEnterBackground:", {app.make("NSObject")});
}

// The messenger's message database: one message to and one from each JID.
void writeChats(const TestDevice& device, const Chats& jids) {
  std::vector<std::pair<std::optional<std::string>, std::optional<std::string>>> rows;
  for (const std::string& jid : jids) {
    rows.push_back({jid, "me@s.whatsapp.net"});
    rows.push_back({"me@s.whatsapp.net", jid});
  }
  device.writeChatStorage(rows);
}

using ChatPurgeTest = MessengerTest;

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
    EXPECT_FALSE(fs::exists(device.native(kChatStorage)));

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
  }, underTheBackgroundHook);
}

TEST_F(ChatPurgeTest, EntriesWithQuotesAndWildcardsDeleteOnlyLiteralMatches) {
  // Each entry is hostile to the query it is pasted into.
  for (const char* entry : {
           "4917'012345",                    // a quote breaks the query: nothing found
           "it's",                           // the same, although a chat holds it literally
           "' OR ''='",                      // closes the quotes: every row comes back
           "'; DELETE FROM ZWAMESSAGE; --",  // a second statement, never run
           "491%345",                        // '%' widens the LIKE to 4917012345
           "49_7",                           // '_' widens it too
           "S.WHATSAPP.NET",                 // LIKE ignores case, the containment test does not
           "",                               // matches every row and no JID
           "%", "_",                         // each literally in one JID only
       }) {
    device.addToBlacklist(entry);
  }
  const Chats kept{"4917012345@s.whatsapp.net", "4930999@s.whatsapp.net", "it's-me@g.us"};
  const Chats literal{"100%@s.whatsapp.net", "team_a@g.us"};
  Chats all = kept;
  all.insert(literal.begin(), literal.end());
  writeChats(device, all);
  const std::string storageBefore = contentsOf(device.native(kChatStorage));

  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) {
    hostLog().chats = all;
    background(app, app.make("WhatsAppAppDelegate"));
    EXPECT_EQ(hostLog().chats, kept);
    EXPECT_EQ(hostLog().refreshes, static_cast<int>(literal.size()));
    EXPECT_EQ(hostLog().backgrounded, 1);
  });
  // The messenger's database is only ever read.
  EXPECT_EQ(contentsOf(device.native(kChatStorage)), storageBefore);
  std::printf("hushwall-figure: purge: 10 hostile blacklist entries deleted only the %zu chats "
              "holding one literally; the messenger's database untouched\n",
              literal.size());
}

TEST_F(ChatPurgeTest, AMessageDatabaseItCannotUseDeletesNothingUntilItIsSound) {
  device.addToBlacklist("4917012345");
  const std::string storage = device.native(kChatStorage);
  const Chats both{"4917012345@s.whatsapp.net", "4930999@s.whatsapp.net"};
  const std::vector<std::pair<const char*, std::function<void()>>> faults = {
      {"no ZWAMESSAGE table",
       [&] { execSql(storage, "CREATE TABLE ZWACHATSESSION (ZCONTACTJID TEXT)"); }},
      {"ZWAMESSAGE without its columns", [&] { execSql(storage, "CREATE TABLE ZWAMESSAGE (x)"); }},
      {"random bytes", [&] { std::ofstream(storage) << std::string(8192, '\x5a'); }},
      {"cut short", [&] { writeChats(device, both), fs::resize_file(storage, 1000); }},
      {"a directory in its place", [&] { fs::create_directory(storage); }},
  };
  for (const auto& [name, make] : faults) {
    fs::remove_all(storage);
    fs::create_directories(fs::path(storage).parent_path());
    make();
    const std::string fault = name;  // a lambda may not capture a structured binding
    inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) {
      hostLog().chats = both;
      background(app, app.make("WhatsAppAppDelegate"));
      EXPECT_EQ(hostLog().chats, both) << fault;
      EXPECT_EQ(hostLog().backgrounded, 1) << fault;  // the app still handles the event
      // The messenger writes a sound database while it runs: the next trip
      // to the background purges as usual.
      writeChats(device, both);
      background(app, app.make("WhatsAppAppDelegate"));
      EXPECT_EQ(hostLog().chats, Chats{"4930999@s.whatsapp.net"}) << fault;
    });
  }
  std::printf("hushwall-figure: purge: %zu unusable message databases survived\n", faults.size());
}

// The chat list's two questions carry the tags their answers are told apart
// by (the scenario files play the questions and answers themselves).
TEST_F(MessengerTest, TheBlacklistQuestionsCarryTheirTags) {
  device.addToBlacklist("612345678");
  device.writeFlags({{"ActionButton", true}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) {
    for (auto [jid, button, tag] : {std::tuple{"34612345678@s.whatsapp.net", "Remove from Blacklist", 979797},
                                    std::tuple{"34600111222@s.whatsapp.net", "Add to Blacklist", 989898}}) {
      app.send(app.make("ChatListViewController"), "chatSessionCellShowMoreOptions:",
               {simhost::makeCell(app.runtime(), jid, "Carl")});
      app.sendToClass("WABlockBasedActionSheet", "actionSheetWithTitle:", {Value::string(host::T("Chat"))});
      simhost::tapButton(button);
      EXPECT_EQ(app.device().alerts().shown().back().tag, tag) << button;
    }
  });
}

}  // namespace
}  // namespace hushwall::testing
