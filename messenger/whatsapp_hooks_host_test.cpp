// The messenger's hooks inside a WhatsApp process: the incoming filter, the
// outgoing record, the chat list's blacklist button and the chat purge.
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
using simhost::makeStanza;
using simhost::Media;
using Ids = std::vector<std::string>;
using Titles = std::vector<std::string>;
using Chats = std::set<std::string>;

constexpr char kBlocked[] = "34612345678@s.whatsapp.net";  // covered by "612345678"
constexpr char kClean[] = "34699000000@s.whatsapp.net";
constexpr char kPictureFolder[] = "/var/mobile/Library/Preferences/Hushwall/34612345678";
constexpr char kChatStorage[] =
    "/var/mobile/Applications/net.whatsapp.WhatsApp/Documents/ChatStorage.sqlite";
constexpr char kAdd[] = "Add to Blacklist";
constexpr char kRemove[] = "Remove from Blacklist";

std::string contentsOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class MessengerTest : public ::testing::Test {
 protected:
  MessengerTest() { device.installDatabase(); }
  TestDevice device;
};

// What the messenger's own handler received last, seen from under the hook.
Value deliveredBatch;
host::IMP hostDelivery = nullptr;
Value recordDelivery(const Value& self, const host::Selector& cmd, const host::Args& args) {
  deliveredBatch = args.at(0);
  return hostDelivery(self, cmd, args);
}
void underTheDeliveryHook(simhost::SimulatedApp& app) {
  app.runtime().hookMessage(app.runtime().getClass("XMPPConnection"),
                            "processIncomingMessageStanzas:", recordDelivery, &hostDelivery);
}

// A stanza as the server sends it; Ann's messages come from a blacklisted number.
struct In {
  std::string id;
  simhost::OptString from, text, nick;
  double sent;
  std::optional<Media> media = std::nullopt;
};
In ann(const std::string& id, const simhost::OptString& text, double sent,
       std::optional<Media> media = std::nullopt) {
  return {id, kBlocked, text, "Ann", sent, std::move(media)};
}

// One batch handed to the messenger's connection.
Value deliver(simhost::SimulatedApp& app, const std::vector<In>& stanzas) {
  host::Array array;
  for (const In& s : stanzas) {
    array.push_back(makeStanza(app.runtime(), s.id, s.from, s.text, s.nick, s.sent, s.media));
  }
  Value batch = Value::array(std::move(array));
  app.send(app.make("XMPPConnection"), "processIncomingMessageStanzas:", {batch});
  return batch;
}

auto fields(const HistoryRow& r) {
  return std::tie(r.phoneNumber, r.name, r.message, r.date, r.blockType, r.mediaType,
                  r.mediaFileName, r.mediaURL, r.isMine);
}

int filesIn(const std::string& folder) {
  if (!fs::exists(folder)) return 0;
  auto entries = fs::directory_iterator(folder);
  return static_cast<int>(std::distance(begin(entries), end(entries)));
}

// The incoming filter: which stanzas reach the messenger, which get
// receipts, what is recorded, saved and signalled.
struct IncomingFilterTest : MessengerTest {
  IncomingFilterTest() { device.addToBlacklist("612345678"); }
};

TEST_F(IncomingFilterTest, MixedBatchIsSplitInOrderAndBlockedMessagesAreRecorded) {
  device.writeFlags({{"Enabled", true}, {"Vibrate", true}, {"ShowStatusbarIcon", true}});
  // Not a multiple of 128 s, so the single-precision rounding shows.
  const double sent = 1400000100.75;
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter& posted) {
    Value batch = deliver(app, {{"p1", kClean, "one", "Pat", sent}, ann("b1", "hello", sent),
                                {"p2", kClean, "two", "Pat", sent},
                                {"b2", "612345678@s.whatsapp.net", "bare", {}, sent + 1000}});
    EXPECT_EQ(hostLog().delivered, std::vector<Ids>{Ids({"p1", "p2"})});
    EXPECT_FALSE(deliveredBatch.isSameObject(batch));
    EXPECT_EQ(hostLog().receipts, std::vector<Ids>{Ids({"b1", "b2"})});
    EXPECT_EQ(app.device().systemSounds().vibrations(), 1);
    EXPECT_TRUE(posted.waitFor(kAddStatusBarIcon));
    EXPECT_TRUE(posted.waitFor(kNewMessagedAdded));

    // A batch blocked whole never reaches the messenger, not even empty.
    deliver(app, {ann("b3", "three", sent + 2000)});
    EXPECT_EQ(hostLog().delivered.size(), 1u);
    EXPECT_EQ(hostLog().receipts.back(), Ids{"b3"});
    ASSERT_TRUE(posted.settle());
    EXPECT_EQ(posted.count(kNewMessagedAdded), 2);  // once per batch, not per row
  }, underTheDeliveryHook);

  auto rows = device.history();
  ASSERT_EQ(rows.size(), 3u);
  // The record's block type is filed under another key; the date is rounded
  // to a float. Without a nickname the record ends after the number.
  EXPECT_EQ(fields(rows[0]), std::make_tuple("34612345678", "Ann", "hello",
                                             static_cast<double>(static_cast<float>(sent)), 0, 0,
                                             "", "", 0));
  EXPECT_EQ(fields(rows[1]), std::make_tuple("612345678", std::nullopt, std::nullopt, 0.0, 0, 0,
                                             std::nullopt, std::nullopt, 0));
}

TEST_F(IncomingFilterTest, RepeatsAndOtherMediaSilenceTheRestOfTheirBatch) {
  device.writeFlags({{"Enabled", true}, {"Vibrate", true}, {"ShowStatusbarIcon", true}});
  const double t = 1400000000.0;  // a multiple of 128 s: stored exactly
  const host::Bytes picture{0x89, 'P', 'N', 'G'};
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter& posted) {
    auto vibrations = [&] { return app.device().systemSounds().vibrations(); };
    deliver(app, {ann("a1", "again", t)});
    EXPECT_EQ(vibrations(), 1);
    // The server redelivers: a repeat within two minutes is not recorded and
    // does not buzz again.
    deliver(app, {ann("a2", "again", t + 10)});
    EXPECT_EQ(vibrations(), 1);
    // A voice note makes the whole rest of the batch go unrecorded.
    deliver(app, {ann("v1", {}, t + 20, Media{2, "u:v", {1}}), ann("a3", "after voice", t + 30)});
    EXPECT_EQ(vibrations(), 1);
    // A picture after a repeat is saved, but not recorded.
    deliver(app, {ann("a4", "again", t + 40), ann("i1", {}, t + 50, Media{1, "u:1", picture})});
    EXPECT_EQ(vibrations(), 1);
    EXPECT_EQ(filesIn(device.native(kPictureFolder)), 1);

    deliver(app, {ann("i2", "look", t + 60, Media{1, "u:2", picture})});
    EXPECT_EQ(vibrations(), 2);
    EXPECT_EQ(filesIn(device.native(kPictureFolder)), 2);
    EXPECT_TRUE(hostLog().delivered.empty());
    EXPECT_EQ(hostLog().receipts.size(), 5u);
    ASSERT_TRUE(posted.settle());
    EXPECT_EQ(posted.count(kAddStatusBarIcon), 2);
  });

  auto rows = device.history();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].message, "again");
  EXPECT_EQ(rows[1].message, "look");
  EXPECT_EQ(rows[1].mediaType, 1);
  EXPECT_EQ(rows[1].mediaURL, "u:2");
  ASSERT_TRUE(rows[1].mediaFileName.has_value());
  EXPECT_EQ(rows[1].mediaFileName->rfind(std::string(kPictureFolder) + "/34612345678-", 0), 0u);
  EXPECT_EQ(contentsOf(device.native(*rows[1].mediaFileName)),
            std::string(picture.begin(), picture.end()));
}

TEST_F(IncomingFilterTest, WithHistoryOffPicturesAreStillSavedAndTheUserStillTold) {
  device.writeFlags({{"Enabled", true}, {"SaveHistory", false}, {"Vibrate", true},
                     {"ShowStatusbarIcon", true}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter& posted) {
    deliver(app, {ann("i1", {}, 1400000000.0, Media{1, "u", {7}})});
    EXPECT_EQ(filesIn(device.native(kPictureFolder)), 1);
    deliver(app, {ann("t1", "hi", 1400000000.0)});
    EXPECT_EQ(app.device().systemSounds().vibrations(), 2);
    ASSERT_TRUE(posted.settle());
    EXPECT_EQ(posted.count(kAddStatusBarIcon), 2);
    EXPECT_EQ(posted.count(kNewMessagedAdded), 0);
  });
  EXPECT_TRUE(device.history().empty());
}

// The outgoing record: texts to blacklisted numbers are written as the
// user's own, and every message is still sent.
using OutgoingRecordTest = IncomingFilterTest;

TEST_F(OutgoingRecordTest, TextsToBlacklistedNumbersAreRecordedEvenWithFilteringOffNotWithHistoryOff) {
  for (bool saveHistory : {false, true}) {
    device.writeFlags({{"Enabled", !saveHistory}, {"SaveHistory", saveHistory}});
    inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) {
      Value connection = app.make("XMPPConnection");
      using Message = std::tuple<const char*, const char*, const char*, int>;
      for (auto [id, jid, text, media] : std::vector<Message>{
               {"m1", kBlocked, "hi", 0}, {"m2", kClean, "hi", 0},
               {"m3", kBlocked, "pic", 1}, {"m4", kBlocked, "hi", 0}}) {
        app.send(connection, "sendMessage:",
                 {simhost::makeOutgoingMessage(app.runtime(), id, jid, text, media, 1400000100.75)});
      }
      EXPECT_EQ(hostLog().sent, (std::vector<std::string>{"m1", "m2", "m3", "m4"}));
    });
    auto rows = device.history();
    // m1 and m4: the same text twice is recorded twice; m2 is not blacklisted
    // and m3 is not a text.
    ASSERT_EQ(rows.size(), saveHistory ? 2u : 0u);
    for (const HistoryRow& row : rows) {  // the full double, no float rounding here
      EXPECT_EQ(fields(row),
                std::make_tuple("34612345678", "Me", "hi", 1400000100.75, 1, 0, "", "", 1));
    }
  }
}

// The blacklist button: which sheet gets it, the confirmation it asks, and
// what each answer does to the Blacklist table.

// The user opens a chat's options (the cell as the chat list has it).
void openOptions(simhost::SimulatedApp& app, const simhost::OptString& jid,
                 const simhost::OptString& name) {
  app.send(app.make("ChatListViewController"), "chatSessionCellShowMoreOptions:",
           {simhost::makeCell(app.runtime(), jid, name)});
}

// The messenger builds an action sheet; the titles of the buttons added to it.
Titles buildSheet(simhost::SimulatedApp& app) {
  app.sendToClass("WABlockBasedActionSheet", "actionSheetWithTitle:",
                  {host::Value::string(host::T("Chat"))});
  Titles titles;
  for (const auto& button : hostLog().sheets.back().buttons) titles.push_back(button.first);
  return titles;
}

// Opens the chat's options, expects the one button `title` on the sheet and
// taps it; the confirmation's message.
std::string tap(simhost::SimulatedApp& app, const simhost::OptString& jid,
                const simhost::OptString& name, const char* title) {
  openOptions(app, jid, name);
  EXPECT_EQ(buildSheet(app), Titles{title});
  simhost::tapButton(title);
  return host::toUtf8(app.device().alerts().shown().back().message);
}

using ChatListActionTest = MessengerTest;

TEST_F(ChatListActionTest, OneButtonPerNotedChatAndOnlyYesAddsIt) {
  device.writeFlags({{"ActionButton", true}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter& posted) {
    openOptions(app, "34600111222@s.whatsapp.net", "Bob");
    // A row without a JID is not noted and leaves Bob pending.
    openOptions(app, std::nullopt, "Group");
    EXPECT_EQ(hostLog().optionsOpened.size(), 2u);
    EXPECT_EQ(buildSheet(app), Titles{kAdd});
    simhost::tapButton(kAdd);
    const host::AlertView& alert = app.device().alerts().shown().back();
    EXPECT_EQ(host::toUtf8(alert.message), "Would you like to blacklist Bob (34600111222) ?");
    EXPECT_EQ(std::tie(alert.title, alert.cancelButtonTitle, alert.tag),
              std::make_tuple(host::T("Hushwall"), host::T("No"), 989898));
    EXPECT_EQ(alert.otherButtonTitles, std::vector<host::Text>{host::T("Yes")});
    EXPECT_TRUE(buildSheet(app).empty());  // the next sheet is some other sheet
    app.device().alerts().answer(0);
    ASSERT_TRUE(posted.settle());
    EXPECT_EQ(posted.count(kContactsChanged), 0);
    EXPECT_TRUE(device.blacklist().empty());

    // A chat without a name label.
    EXPECT_EQ(tap(app, "34600333444@s.whatsapp.net", std::nullopt, kAdd),
              "Would you like to blacklist Anonymous (34600333444) ?");
    app.device().alerts().answer(1);
    EXPECT_EQ(device.blacklist(), (std::vector<BlacklistRow>{{"Anonymous", "34600333444"}}));
    ASSERT_TRUE(posted.waitFor(kContactsChanged));
    // This process has reloaded its list: the same chat now offers removal.
    openOptions(app, "34600333444@s.whatsapp.net", std::nullopt);
    EXPECT_EQ(buildSheet(app), Titles{kRemove});
  });
}

TEST_F(ChatListActionTest, RemoveDeletesTheStoredEntryThatCoversTheChat) {
  device.addToBlacklist("699999999", "Zed");
  device.addToBlacklist("612345678", "Carl");
  device.writeFlags({{"ActionButton", true}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter& posted) {
    EXPECT_EQ(tap(app, "34612345678@s.whatsapp.net", "Carl", kRemove),
              "Would you like to unblacklist Carl (34612345678) ?");
    EXPECT_EQ(app.device().alerts().shown().back().tag, 979797);
    app.device().alerts().answer(0);
    ASSERT_TRUE(posted.settle());
    EXPECT_EQ(posted.count(kContactsChanged), 0);
    EXPECT_EQ(device.blacklist().size(), 2u);

    tap(app, "34612345678@s.whatsapp.net", "Carl", kRemove);
    app.device().alerts().answer(1);
    EXPECT_EQ(device.blacklist(), (std::vector<BlacklistRow>{{"Zed", "699999999"}}));
    ASSERT_TRUE(posted.waitFor(kContactsChanged));
    openOptions(app, "34612345678@s.whatsapp.net", "Carl");
    EXPECT_EQ(buildSheet(app), Titles{kAdd});
  });
}

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

// Switched off, each hook hands on what it is given and does nothing else.
using SwitchedOffTest = IncomingFilterTest;

TEST_F(SwitchedOffTest, EachHookHandsOnWhatItIsGivenAndDoesNothingElse) {
  device.writeFlags({{"Enabled", false}, {"Vibrate", true}, {"ShowStatusbarIcon", true},
                     {"ActionButton", false}, {"DeleteMessages", false}});
  device.writeChatStorage({{kBlocked, ""}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter& posted) {
    Value batch = deliver(app, {ann("b1", "hi", 1400000000.0),
                                {"p1", kClean, "yo", "Bo", 1400000001.0}});
    EXPECT_TRUE(deliveredBatch.isSameObject(batch));
    EXPECT_EQ(hostLog().delivered, std::vector<Ids>{Ids({"b1", "p1"})});
    EXPECT_TRUE(hostLog().receipts.empty());
    EXPECT_EQ(app.device().systemSounds().vibrations(), 0);

    openOptions(app, "34600111222@s.whatsapp.net", "Bob");
    EXPECT_EQ(hostLog().optionsOpened.size(), 1u);
    EXPECT_TRUE(buildSheet(app).empty());

    hostLog().chats = {kBlocked};
    Value delegate = app.make("WhatsAppAppDelegate");
    background(app, delegate);
    app.send(delegate, "applicationWillTerminate:", {Value()});
    EXPECT_EQ(hostLog().backgrounded, 1);
    EXPECT_EQ(hostLog().terminated, 1);
    EXPECT_EQ(hostLog().chats, Chats{kBlocked});
    EXPECT_EQ(hostLog().refreshes, 0);
    ASSERT_TRUE(posted.settle());
    EXPECT_EQ(posted.count(kAddStatusBarIcon), 0);
    EXPECT_TRUE(device.history().empty());
  }, underTheDeliveryHook);
}

}  // namespace
}  // namespace hushwall::testing
