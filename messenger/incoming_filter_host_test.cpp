// The incoming filter inside a WhatsApp process: which stanzas reach the
// messenger, which get receipts, what is recorded, saved and signalled.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

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

Value deliver(simhost::SimulatedApp& app, const Value& connection, host::Array stanzas) {
  Value batch = Value::array(std::move(stanzas));
  app.send(connection, "processIncomingMessageStanzas:", {batch});
  return batch;
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
    Value connection = app.make("XMPPConnection");
    Value batch = deliver(app, connection,
                          {makeStanza(app.runtime(), "b1", kBlocked, "hi", "Ann", 1400000000.0),
                           makeStanza(app.runtime(), "p1", kClean, "yo", "Bo", 1400000001.0)});
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
    auto& rt = app.runtime();
    Value connection = app.make("XMPPConnection");
    Value batch = deliver(app, connection,
                          {makeStanza(rt, "p1", kClean, "one", "Pat", sent),
                           makeStanza(rt, "b1", kBlocked, "hello", "Ann", sent),
                           makeStanza(rt, "p2", kClean, "two", "Pat", sent),
                           makeStanza(rt, "b2", "612345678@s.whatsapp.net", "bare", std::nullopt,
                                      sent + 1000)});
    EXPECT_EQ(hostLog().delivered, std::vector<Ids>{Ids({"p1", "p2"})});
    EXPECT_FALSE(deliveredBatch.isSameObject(batch));
    EXPECT_EQ(hostLog().receipts, std::vector<Ids>{Ids({"b1", "b2"})});
    EXPECT_EQ(app.device().systemSounds().vibrations(), 1);
    EXPECT_TRUE(posted.waitFor(kAddStatusBarIcon));
    EXPECT_TRUE(posted.waitFor(kNewMessagedAdded));

    // A batch blocked whole never reaches the messenger, not even empty.
    deliver(app, connection, {makeStanza(rt, "b3", kBlocked, "three", "Ann", sent + 2000)});
    EXPECT_EQ(hostLog().delivered.size(), 1u);
    EXPECT_EQ(hostLog().receipts.back(), Ids{"b3"});
    ASSERT_TRUE(posted.settle());
    EXPECT_EQ(posted.count(kNewMessagedAdded), 2);  // once per batch, not per row
  }, underTheHook);

  auto rows = device.history();
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0].phoneNumber, "34612345678");
  EXPECT_EQ(rows[0].name, "Ann");
  EXPECT_EQ(rows[0].message, "hello");
  EXPECT_EQ(rows[0].date, static_cast<double>(static_cast<float>(sent)));
  EXPECT_NE(rows[0].date, sent);
  EXPECT_EQ(rows[0].blockType, 0);  // the record's block type is filed under another key
  EXPECT_EQ(rows[0].isMine, 0);
  EXPECT_EQ(rows[0].mediaType, 0);
  EXPECT_EQ(rows[0].mediaFileName, "");
  EXPECT_EQ(rows[0].mediaURL, "");
  // Without a nickname the record ends after the number.
  EXPECT_EQ(rows[1].phoneNumber, "612345678");
  EXPECT_EQ(rows[1].name, std::nullopt);
  EXPECT_EQ(rows[1].message, std::nullopt);
  EXPECT_EQ(rows[1].date, 0.0);
  EXPECT_EQ(rows[1].mediaFileName, std::nullopt);
}

TEST_F(IncomingFilterTest, RepeatsAndOtherMediaSilenceTheRestOfTheirBatch) {
  device.writeFlags({{"Enabled", true}, {"Vibrate", true}, {"ShowStatusbarIcon", true}});
  const double t = 1400000000.0;  // a multiple of 128 s: stored exactly
  const host::Bytes picture{0x89, 'P', 'N', 'G'};
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter& posted) {
    auto& rt = app.runtime();
    Value connection = app.make("XMPPConnection");
    auto vibrations = [&] { return app.device().systemSounds().vibrations(); };

    deliver(app, connection, {makeStanza(rt, "a1", kBlocked, "again", "Ann", t)});
    EXPECT_EQ(vibrations(), 1);
    // The server redelivers: a repeat within two minutes is not recorded and
    // does not buzz again.
    deliver(app, connection, {makeStanza(rt, "a2", kBlocked, "again", "Ann", t + 10)});
    EXPECT_EQ(vibrations(), 1);
    // A voice note makes the whole rest of the batch go unrecorded.
    deliver(app, connection,
            {makeStanza(rt, "v1", kBlocked, std::nullopt, "Ann", t + 20, Media{2, "u:v", {1}}),
             makeStanza(rt, "a3", kBlocked, "after voice", "Ann", t + 30)});
    EXPECT_EQ(vibrations(), 1);
    // A picture after a repeat is saved, but not recorded.
    deliver(app, connection,
            {makeStanza(rt, "a4", kBlocked, "again", "Ann", t + 40),
             makeStanza(rt, "i1", kBlocked, std::nullopt, "Ann", t + 50,
                        Media{1, "u:1", picture})});
    EXPECT_EQ(vibrations(), 1);
    EXPECT_EQ(filesIn(device.native(kPictureFolder)), 1);

    deliver(app, connection,
            {makeStanza(rt, "i2", kBlocked, "look", "Ann", t + 60, Media{1, "u:2", picture})});
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
    auto& rt = app.runtime();
    Value connection = app.make("XMPPConnection");
    deliver(app, connection, {makeStanza(rt, "i1", kBlocked, std::nullopt, "Ann", 1400000000.0,
                                         Media{1, "u", {7}})});
    EXPECT_EQ(filesIn(device.native(kPictureFolder)), 1);
    deliver(app, connection, {makeStanza(rt, "t1", kBlocked, "hi", "Ann", 1400000000.0)});
    EXPECT_EQ(app.device().systemSounds().vibrations(), 2);
    ASSERT_TRUE(posted.settle());
    EXPECT_EQ(posted.count(kAddStatusBarIcon), 2);
    EXPECT_EQ(posted.count(kNewMessagedAdded), 0);
  });
  EXPECT_TRUE(device.history().empty());
}

}  // namespace
}  // namespace hushwall::testing
