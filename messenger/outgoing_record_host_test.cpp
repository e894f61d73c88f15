// The outgoing record inside a WhatsApp process: texts to blacklisted
// numbers are written as the user's own, and every message is still sent.
#include <gtest/gtest.h>

#include <tuple>

#include "messenger/whatsapp_test_process.h"
#include "simhost/host_log.h"
#include "simhost/whatsapp_classes.h"

namespace hushwall::testing {
namespace {

TEST(OutgoingRecordTest, TextsToBlacklistedNumbersAreRecordedEvenWithFilteringOffNotWithHistoryOff) {
  for (bool saveHistory : {true, false}) {
    TestDevice device;
    device.installDatabase();
    device.addToBlacklist("612345678");
    device.writeFlags({{"Enabled", !saveHistory}, {"SaveHistory", saveHistory}});
    inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) {
      const char* blocked = "34612345678@s.whatsapp.net";  // covered by "612345678"
      host::Value connection = app.make("XMPPConnection");
      using Message = std::tuple<const char*, const char*, const char*, int>;
      for (auto [id, jid, text, media] : std::vector<Message>{
               {"m1", blocked, "hi", 0}, {"m2", "34699000000@s.whatsapp.net", "hi", 0},
               {"m3", blocked, "pic", 1}, {"m4", blocked, "hi", 0}}) {
        app.send(connection, "sendMessage:",
                 {simhost::makeOutgoingMessage(app.runtime(), id, jid, text, media, 1400000100.75)});
      }
      EXPECT_EQ(simhost::hostLog().sent, (std::vector<std::string>{"m1", "m2", "m3", "m4"}));
    });
    auto rows = device.history();
    // m1 and m4: the same text twice is recorded twice; m2 is not blacklisted
    // and m3 is not a text.
    ASSERT_EQ(rows.size(), saveHistory ? 2u : 0u);
    for (const HistoryRow& row : rows) {
      EXPECT_EQ(row.phoneNumber, "34612345678");
      EXPECT_EQ(row.name, "Me");
      EXPECT_EQ(row.message, "hi");
      EXPECT_EQ(row.date, 1400000100.75);  // the full double, no float rounding here
      EXPECT_EQ(row.blockType, 1);
      EXPECT_EQ(row.isMine, 1);
    }
  }
}

}  // namespace
}  // namespace hushwall::testing
