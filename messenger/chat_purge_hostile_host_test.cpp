// The chat purge against a hostile message database and hostile blacklist
// entries, inside a WhatsApp process. The purge builds its query by pasting
// each entry between LIKE wildcards without escaping anything; it must still
// delete only chats whose JID holds an entry literally, never write to the
// messenger's database, and shrug off a database it cannot use.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "messenger/whatsapp_test_process.h"
#include "simhost/host_log.h"

namespace hushwall::testing {
namespace {

namespace fs = std::filesystem;
using host::Value;
using simhost::hostLog;
using Chats = std::set<std::string>;

constexpr char kChatStorage[] =
    "/var/mobile/Applications/net.whatsapp.WhatsApp/Documents/ChatStorage.sqlite";

// The messenger's message database: one message to and one from each JID.
void writeChatStorage(const TestDevice& device, const std::vector<std::string>& jids) {
  std::vector<std::pair<std::optional<std::string>, std::optional<std::string>>> rows;
  for (const std::string& jid : jids) {
    rows.push_back({jid, "me@s.whatsapp.net"});
    rows.push_back({"me@s.whatsapp.net", jid});
  }
  device.writeChatStorage(rows);
}

std::string contentsOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

void background(simhost::SimulatedApp& app) {
  app.send(app.make("WhatsAppAppDelegate"), "applicationDidEnterBackground:",
           {app.make("NSObject")});
}

TEST(ChatPurgeHostile, EntriesWithQuotesAndWildcardsDeleteOnlyLiteralMatches) {
  TestDevice device;
  device.installDatabase();
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
           "%",                              // literally in one JID only
           "_",                              // likewise
       }) {
    device.addToBlacklist(entry);
  }
  const std::string storage = device.native(kChatStorage);
  const Chats kept{"4917012345@s.whatsapp.net", "4930999@s.whatsapp.net", "it's-me@g.us"};
  const Chats literal{"100%@s.whatsapp.net", "team_a@g.us"};
  std::vector<std::string> jids(kept.begin(), kept.end());
  jids.insert(jids.end(), literal.begin(), literal.end());
  writeChatStorage(device, jids);
  const std::string storageBefore = contentsOf(storage);

  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) {
    hostLog().chats = kept;
    hostLog().chats.insert(literal.begin(), literal.end());
    background(app);
    EXPECT_EQ(hostLog().chats, kept);
    EXPECT_EQ(hostLog().refreshes, static_cast<int>(literal.size()));
    EXPECT_EQ(hostLog().backgrounded, 1);
  });
  // The messenger's database is only ever read.
  EXPECT_EQ(contentsOf(storage), storageBefore);
  std::printf("hushwall-figure: purge: 10 hostile blacklist entries deleted only the %zu chats "
              "holding one literally; the messenger's database untouched\n",
              literal.size());
}

TEST(ChatPurgeHostile, AMessageDatabaseItCannotUseDeletesNothingUntilItIsSound) {
  TestDevice device;
  device.installDatabase();
  device.addToBlacklist("4917012345");
  const std::string storage = device.native(kChatStorage);
  const std::string blocked = "4917012345@s.whatsapp.net";
  const std::string other = "4930999@s.whatsapp.net";
  auto replace = [&](const std::function<void()> make) {
    fs::remove_all(storage);
    fs::create_directories(fs::path(storage).parent_path());
    make();
  };
  const std::vector<std::pair<const char*, std::function<void()>>> faults = {
      {"no ZWAMESSAGE table",
       [&] { execSql(storage, "CREATE TABLE ZWACHATSESSION (ZCONTACTJID TEXT)"); }},
      {"ZWAMESSAGE without its columns", [&] { execSql(storage, "CREATE TABLE ZWAMESSAGE (x)"); }},
      {"random bytes",
       [&] { std::ofstream(storage, std::ios::binary) << std::string(8192, '\x5a'); }},
      {"cut short",
       [&] {
         writeChatStorage(device, {blocked, other});
         fs::resize_file(storage, 1000);
       }},
      {"a directory in its place", [&] { fs::create_directory(storage); }},
  };

  for (const auto& [name, make] : faults) {
    replace(make);
    const std::string fault = name;  // a lambda may not capture a structured binding
    inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) {
      hostLog().chats = {blocked, other};
      background(app);
      EXPECT_EQ(hostLog().chats, (Chats{blocked, other})) << fault;
      EXPECT_EQ(hostLog().backgrounded, 1) << fault;  // the app still handles the event

      // The messenger writes a sound database while it runs: the next trip
      // to the background purges as usual.
      writeChatStorage(device, {blocked, other});
      background(app);
      EXPECT_EQ(hostLog().chats, Chats{other}) << fault;
    });
  }
  std::printf("hushwall-figure: purge: %zu unusable message databases survived\n", faults.size());
}

}  // namespace
}  // namespace hushwall::testing
