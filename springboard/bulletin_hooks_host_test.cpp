// The longer bulletin method of iOS 8.2 inside a simulated SpringBoard with
// the library loaded, against a real database and the device's bus. (What
// the banner and the lists do with each kind of bulletin is played, with its
// expected outcome, by the scenario files.)
#include <gtest/gtest.h>

#include "simhost/host_log.h"
#include "simhost/test_device.h"
#include "simhost/test_springboard.h"
#include "testing/child_process.h"

namespace hushwall::testing {
namespace {

using host::Value;

const std::string kBlockedJid = "4917012345@s.whatsapp.net";
const std::string kAllowedJid = "4930999@s.whatsapp.net";

struct Fixture {
  Fixture(const host::Dict& settings) {
    device.installDatabase();
    device.addToBlacklist("4917012345", "Alice");
    device.writeSettings(settings);
  }
  TestDevice device;
};

TEST(BulletinHooks, TheLongerMethodOfIOS82IsJudgedAsTheFirstAndHandsOnEveryArgument) {
  Fixture f(settingsFlags(true, true, true, true));
  runInChildProcess([&] {
    TestSpringBoard sb(f.device, HUSHWALL_LIBRARY_PATH, Value::integer(3));
    const Value reply = sb.app().make("NSObject");
    // Blocked: neither the banner nor the lock screen sees it; the banner's
    // side effects are those of the short method.
    sb.deliverWithReply(sb.bulletin(kMessengerId, localContext(kBlockedJid), "Alice: hi"), reply);
    EXPECT_EQ(sb.shown("banner"), 0u);
    EXPECT_EQ(sb.shown("lockscreen"), 0u);
    EXPECT_EQ(sb.shown("notificationCenter"), 0u);
    ASSERT_EQ(f.device.history().size(), 1u);
    EXPECT_EQ(f.device.history()[0].message, "hi");
    EXPECT_TRUE(sb.iconShown());
    EXPECT_EQ(sb.vibrations(), 1);
    EXPECT_TRUE(simhost::hostLog().shownWithReply.empty());

    // Let through: both get it with all five arguments as SpringBoard gave
    // them, and the badge rises once, for the banner.
    const Value allowed = sb.bulletin(kMessengerId, localContext(kAllowedJid));
    sb.deliverWithReply(allowed, reply);
    EXPECT_EQ(sb.shown("banner"), 1u);
    EXPECT_EQ(sb.shown("lockscreen"), 1u);
    EXPECT_EQ(sb.shown("notificationCenter"), 1u);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(4));
    ASSERT_EQ(simhost::hostLog().shownWithReply.size(), 2u);
    for (const host::Args& args : simhost::hostLog().shownWithReply) {
      ASSERT_EQ(args.size(), 5u);
      EXPECT_TRUE(args[1].isSameObject(allowed));
      EXPECT_EQ(args[2], Value::integer(2));
      EXPECT_EQ(args[3], Value::boolean(true));
      EXPECT_TRUE(args[4].isSameObject(reply));
    }
  });
}

}  // namespace
}  // namespace hushwall::testing
