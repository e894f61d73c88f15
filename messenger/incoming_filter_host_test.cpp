// The incoming filter inside a WhatsApp process: which stanzas reach the
// messenger, which get receipts, what is recorded, saved and signalled.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <tuple>

#include "messenger/whatsapp_test_process.h"
#include "simhost/host_log.h"
#include "simhost/whatsapp_classes.h"

namespace hushwall::testing {
namespace {

using host::Value;
using simhost::hostLog;
using simhost::makeStanza;
using simhost::Media;
using Ids = std::vector<std::string>;

constexpr char kBlocked[] = "34612345678@s.whatsapp.net";  // covered by "612345678"
constexpr char kClean[] = "34699000000@s.whatsapp.net";
constexpr char kPictureFolder[] = "/var/mobile/Library/Preferences/Hushwall/34612345678";

// What the messenger's own handler received last, seen from under the hook.
Value deliveredBatch;
host::IMP hostDelivery = nullptr;
Value recordDelivery(const Value& self, const host::Selector& cmd, const host::Args& args) {
  deliveredBatch = args.at(0);
  return hostDelivery(self, cmd, args);
}
void underTheHook(simhost::SimulatedApp& app) {
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
  if (!std::filesystem::exists(folder)) return 0;
  auto entries = std::filesystem::directory_iterator(folder);
  return static_cast<int>(std::distance(begin(entries), end(entries)));
}

class IncomingFilterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    device.installDatabase();
    device.addToBlacklist("612345678");
  }
  TestDevice device;
};

TEST_F(IncomingFilterTest, SwitchedOffHandsOnTheVeryBatchAndDoesNothingElse) {
  device.writeFlags({{"Enabled", false}, {"Vibrate", true}, {"ShowStatusbarIcon", true}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter& posted) {
    Value batch = deliver(app, {ann("b1", "hi", 1400000000.0),
                                {"p1", kClean, "yo", "Bo", 1400000001.0}});
    EXPECT_TRUE(deliveredBatch.isSameObject(batch));
    EXPECT_EQ(hostLog().delivered, std::vector<Ids>{Ids({"b1", "p1"})});
    EXPECT_TRUE(hostLog().receipts.empty());
    EXPECT_EQ(app.device().systemSounds().vibrations(), 0);
    ASSERT_TRUE(posted.settle());
    EXPECT_EQ(posted.count(kAddStatusBarIcon), 0);
    EXPECT_TRUE(device.history().empty());
  }, underTheHook);
}

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
  }, underTheHook);

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
  std::ifstream saved(device.native(*rows[1].mediaFileName), std::ios::binary);
  host::Bytes bytes((std::istreambuf_iterator<char>(saved)), std::istreambuf_iterator<char>());
  EXPECT_EQ(bytes, picture);
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

}  // namespace
}  // namespace hushwall::testing
