// The outgoing record inside a WhatsApp process: texts to blacklisted
// numbers are written as the user's own, and every message is still sent.
#include <gtest/gtest.h>

#include "messenger/whatsapp_test_process.h"
#include "simhost/host_log.h"
#include "simhost/whatsapp_classes.h"

namespace hushwall::testing {
namespace {

using simhost::hostLog;
using simhost::makeOutgoingMessage;

constexpr char kBlocked[] = "34612345678@s.whatsapp.net";  // covered by "612345678"
constexpr char kClean[] = "34699000000@s.whatsapp.net";

void sendAll(simhost::SimulatedApp& app) {
  auto& rt = app.runtime();
  host::Value connection = app.make("XMPPConnection");
  const double date = 1400000100.75;
  app.send(connection, "sendMessage:", {makeOutgoingMessage(rt, "m1", kBlocked, "hi", 0, date)});
  app.send(connection, "sendMessage:", {makeOutgoingMessage(rt, "m2", kClean, "hi", 0, date)});
  app.send(connection, "sendMessage:", {makeOutgoingMessage(rt, "m3", kBlocked, "pic", 1, date)});
  app.send(connection, "sendMessage:", {makeOutgoingMessage(rt, "m4", kBlocked, "hi", 0, date)});
  EXPECT_EQ(hostLog().sent, (std::vector<std::string>{"m1", "m2", "m3", "m4"}));
}

class OutgoingRecordTest : public ::testing::Test {
 protected:
  void SetUp() override {
    device.installDatabase();
    device.addToBlacklist("612345678");
  }
  TestDevice device;
};

TEST_F(OutgoingRecordTest, TextsToBlacklistedNumbersAreRecordedEvenWithFilteringOff) {
  device.writeFlags({{"Enabled", false}, {"SaveHistory", true}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) { sendAll(app); });
  auto rows = device.history();
  // m1 and m4: the same text twice is recorded twice; m2 is not blacklisted
  // and m3 is not a text.
  ASSERT_EQ(rows.size(), 2u);
  for (const HistoryRow& row : rows) {
    EXPECT_EQ(row.phoneNumber, "34612345678");
    EXPECT_EQ(row.name, "Me");
    EXPECT_EQ(row.message, "hi");
    EXPECT_EQ(row.date, 1400000100.75);  // the full double, no float rounding here
    EXPECT_EQ(row.blockType, 1);
    EXPECT_EQ(row.isMine, 1);
  }
}

TEST_F(OutgoingRecordTest, NothingIsRecordedWithHistoryOff) {
  device.writeFlags({{"Enabled", true}, {"SaveHistory", false}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) { sendAll(app); });
  EXPECT_TRUE(device.history().empty());
}

}  // namespace
}  // namespace hushwall::testing
