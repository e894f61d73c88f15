// The messenger's badge inside a simulated SpringBoard with the library
// loaded: its own values held back, the library's increments let through.
#include <gtest/gtest.h>

#include "simhost/host_log.h"
#include "simhost/object_access.h"
#include "simhost/springboard_classes.h"
#include "simhost/test_device.h"
#include "simhost/test_springboard.h"
#include "testing/child_process.h"

namespace hushwall::testing {
namespace {

using host::T;
using host::Value;

const std::string kAllowedJid = "4930999@s.whatsapp.net";

TEST(Badge, AnAllowedNotificationRaisesOnlyTheFirstAppOfTheIdentifierAndUsesUpItsPass) {
  TestDevice device;
  device.installDatabase();
  device.writeSettings(settingsFlags(true, true, false, false));
  runInChildProcess([&] {
    TestSpringBoard sb(device, HUSHWALL_LIBRARY_PATH, Value::integer(3));
    Value second = simhost::addApplication(sb.app().runtime(), kMessengerId, Value::integer(10));
    auto set = [&](const Value& badge) { sb.app().send(sb.messenger(), "setBadge:", {badge}); };
    auto notify = [&] { sb.deliverToBanner(sb.bulletin(kMessengerId, localContext(kAllowedJid))); };
    // (The messenger's own values, and texts of the base string class and of
    // a subclass, are played by the scenario files.)
    set(Value());
    // No badge counts as 0; only the first app of the identifier moves.
    notify();
    EXPECT_EQ(sb.messengerBadge(), Value::integer(1));
    EXPECT_EQ(sb.app().send(second, "badgeNumberOrString"), Value::integer(10));
    // The pass was used up by the increment itself.
    set(Value::integer(9));
    EXPECT_EQ(sb.messengerBadge(), Value::integer(1));
    // A text of exactly the base string class restarts at 1, whatever it says.
    simhost::setProperty(sb.messenger(), "badge", Value::string(T("7")));
    notify();
    EXPECT_EQ(sb.messengerBadge(), Value::integer(1));
  });
}

TEST(Badge, ThePassIsOnlyForTheNextBadgeChangeWhileEnabled) {
  TestDevice device;
  device.installDatabase();
  device.writeSettings(settingsFlags(false, true, false, false));
  runInChildProcess([&] {
    TestSpringBoard sb(device, HUSHWALL_LIBRARY_PATH, Value::integer(3));
    Value mail = simhost::addApplication(sb.app().runtime(), "com.example.mail", Value::integer(1));
    Value banner = sb.app().make("SBBulletinBannerController");
    auto increment = [&](const std::string& id) {
      sb.app().send(banner, "addManualBadgeIncrementForBundleIdentifier:", {Value::string(T(id))});
    };
    auto set = [&](const Value& app, int badge) {
      sb.app().send(app, "setBadge:", {Value::integer(badge)});
    };
    auto enable = [&](bool on) {
      device.writeSettings(settingsFlags(on, true, false, false));
      ASSERT_TRUE(device.announce(sb.app(), "com.Corvanta.HushwallSettings.settingsChanged"));
    };

    // Switched off, the increment's own setBadge leaves the pass unused, and
    // so does the messenger's next change.
    increment(kMessengerId);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(4));
    set(sb.messenger(), 7);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(7));
    enable(true);
    set(sb.messenger(), 9);  // the pending pass
    EXPECT_EQ(sb.messengerBadge(), Value::integer(9));
    set(sb.messenger(), 11);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(9));

    // Another app's badge change in between takes the pass away.
    enable(false);
    increment(kMessengerId);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(10));
    enable(true);
    set(mail, 2);
    EXPECT_EQ(sb.app().send(mail, "badgeNumberOrString"), Value::integer(2));
    set(sb.messenger(), 12);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(10));

    // An identifier SpringBoard does not know grants no pass.
    increment("com.example.unknown");
    set(sb.messenger(), 13);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(10));
  });
}

}  // namespace
}  // namespace hushwall::testing
