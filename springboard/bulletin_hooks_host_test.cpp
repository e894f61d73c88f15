// The three bulletin hooks inside a simulated SpringBoard with the library
// loaded, against a real database and the device's bus.
#include <gtest/gtest.h>

#include "simhost/host_log.h"
#include "simhost/test_device.h"
#include "simhost/test_springboard.h"
#include "testing/child_process.h"

namespace hushwall::testing {
namespace {

using host::T;
using host::Value;

constexpr double kT0 = 1700000000;
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

TEST(BulletinHooks, OtherAppsAndTheSwitchedOffTweakPassEverywhereWithoutBadgeMoves) {
  Fixture f(settingsFlags(true, true, true, true));
  runInChildProcess([&] {
    TestSpringBoard sb(f.device, HUSHWALL_LIBRARY_PATH, Value::integer(3));
    // A blacklisted sender, but not the messenger's bulletin: the comparison
    // with its identifier counts case.
    sb.deliver(sb.bulletin("com.example.chat", localContext(kBlockedJid)));
    sb.deliver(sb.bulletin("NET.WHATSAPP.WHATSAPP", localContext(kBlockedJid)));
    sb.deliver(sb.bulletin("NET.WHATSAPP.WHATSAPP", localContext(kAllowedJid)));
    for (const char* where : {"banner", "lockscreen", "notificationCenter"}) {
      EXPECT_EQ(sb.shown(where), 3u) << where;
    }
    EXPECT_EQ(sb.messengerBadge(), Value::integer(3));
    EXPECT_TRUE(f.device.history().empty());
    EXPECT_FALSE(sb.iconShown());
    EXPECT_EQ(sb.vibrations(), 0);
  });

  f.device.writeSettings(settingsFlags(false, true, true, true));
  runInChildProcess([&] {
    TestSpringBoard sb(f.device, HUSHWALL_LIBRARY_PATH, Value::integer(3));
    sb.deliver(sb.bulletin(kMessengerId, localContext(kBlockedJid)));
    sb.deliver(sb.bulletin(kMessengerId, remoteContext("Alice: hi", kBlockedJid)));
    sb.deliver(sb.bulletin(kMessengerId, localContext(kAllowedJid)));
    for (const char* where : {"banner", "lockscreen", "notificationCenter"}) {
      EXPECT_EQ(sb.shown(where), 3u) << where;
    }
    // Switched off, the badge is the messenger's own: no increment.
    EXPECT_EQ(sb.messengerBadge(), Value::integer(3));
    EXPECT_TRUE(f.device.history().empty());
    EXPECT_EQ(sb.vibrations(), 0);
  });
}

TEST(BulletinHooks, BlockedLocalNotificationIsRecordedOnlyWithTheIconAndOncePerTwoMinutes) {
  // SaveHistory on, icon off: swallowed, but neither recorded nor shown.
  Fixture f(settingsFlags(true, true, false, false));
  runInChildProcess([&] {
    TestSpringBoard sb(f.device, HUSHWALL_LIBRARY_PATH, Value::integer(3));
    sb.deliverToBanner(sb.bulletin(kMessengerId, localContext(kBlockedJid)));
    EXPECT_EQ(sb.shown("banner"), 0u);
    EXPECT_TRUE(f.device.history().empty());
    EXPECT_FALSE(sb.iconShown());
    EXPECT_EQ(sb.vibrations(), 0);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(3));
  });

  // SaveHistory off, icon on: both, and the vibration.
  f.device.writeSettings(settingsFlags(true, false, true, true));
  runInChildProcess([&] {
    TestSpringBoard sb(f.device, HUSHWALL_LIBRARY_PATH, Value::integer(3));
    int iconRequests = 0;
    sb.app().device().statusBar().onChange = [&](const std::string& op, const std::string&) {
      iconRequests += op == "add";
    };
    auto& clock = sb.app().device().clock();
    clock.setFixedTime(kT0);
    sb.deliverToBanner(sb.bulletin(kMessengerId, localContext(kBlockedJid), "Alice: see you"));
    ASSERT_EQ(f.device.history().size(), 1u);
    HistoryRow row = f.device.history()[0];
    EXPECT_EQ(row.phoneNumber, "4917012345");
    EXPECT_EQ(row.name, "Alice");
    EXPECT_EQ(row.message, "see you");
    EXPECT_EQ(row.date, kT0);
    EXPECT_EQ(row.blockType, 2);
    EXPECT_EQ(row.isMine, 0);
    EXPECT_TRUE(sb.iconShown());
    EXPECT_EQ(sb.vibrations(), 1);

    // The same message again within the two minutes: swallowed silently.
    clock.setFixedTime(kT0 + 119);
    sb.deliverToBanner(sb.bulletin(kMessengerId, localContext(kBlockedJid), "Alice: see you"));
    EXPECT_EQ(f.device.history().size(), 1u);
    EXPECT_EQ(sb.vibrations(), 1);
    EXPECT_EQ(iconRequests, 1);
    // Later it counts as a new message, and the icon is asked for again.
    clock.setFixedTime(kT0 + 300);
    sb.deliverToBanner(sb.bulletin(kMessengerId, localContext(kBlockedJid), "Alice: see you"));
    EXPECT_EQ(f.device.history().size(), 2u);
    EXPECT_EQ(sb.vibrations(), 2);
    EXPECT_EQ(iconRequests, 2);
    EXPECT_EQ(sb.shown("banner"), 0u);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(3));
  });
}

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

TEST(BulletinHooks, RemoteNotificationsAreJudgedByTheirUAsItStands) {
  Fixture f(settingsFlags(true, true, false, false));
  runInChildProcess([&] {
    TestSpringBoard sb(f.device, HUSHWALL_LIBRARY_PATH, Value::integer(3));
    sb.app().device().clock().setFixedTime(kT0);
    // "u" carries a server part; the listed number is found inside it.
    sb.deliverToBanner(
        sb.bulletin(kMessengerId, remoteContext("Bob: are you there?", kBlockedJid)));
    EXPECT_EQ(sb.shown("banner"), 0u);
    ASSERT_EQ(f.device.history().size(), 1u);
    EXPECT_EQ(f.device.history()[0].phoneNumber, kBlockedJid);
    EXPECT_EQ(f.device.history()[0].name, "Bob");
    EXPECT_EQ(f.device.history()[0].message, "are you there?");
    EXPECT_EQ(f.device.history()[0].blockType, 2);
    EXPECT_FALSE(sb.iconShown());
    EXPECT_EQ(sb.messengerBadge(), Value::integer(3));

    // No "u": handed on uncounted although the text names Alice.
    sb.deliverToBanner(sb.bulletin(kMessengerId, remoteContext("Alice: hi", std::nullopt)));
    EXPECT_EQ(sb.shown("banner"), 1u);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(3));
    // Senders that cannot be read: no jid, no body, an unknown kind.
    Value noJid =
        Value::dictionary({{T("notificationType"), Value::string(T("AppNotificationLocal"))},
                           {T("userInfo"), Value::dictionary({})}});
    sb.deliverToBanner(sb.bulletin(kMessengerId, noJid));
    sb.deliverToBanner(sb.bulletin(kMessengerId, remoteContext(std::nullopt, kBlockedJid)));
    Value otherKind =
        Value::dictionary({{T("notificationType"), Value::string(T("AppNotificationVoIP"))}});
    sb.deliverToBanner(sb.bulletin(kMessengerId, otherKind));
    EXPECT_EQ(sb.shown("banner"), 4u);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(3));

    // Allowed senders of both kinds raise the badge by one each.
    sb.deliverToBanner(sb.bulletin(kMessengerId, remoteContext("Carol: hey", kAllowedJid)));
    EXPECT_EQ(sb.messengerBadge(), Value::integer(4));
    sb.deliverToBanner(sb.bulletin(kMessengerId, localContext(kAllowedJid)));
    EXPECT_EQ(sb.messengerBadge(), Value::integer(5));
    EXPECT_EQ(sb.shown("banner"), 6u);
    EXPECT_EQ(f.device.history().size(), 1u);

    // Requests from outside the library reach the status bar every time,
    // whatever the icon flag says: that flag is the posters' business.
    std::vector<std::string> requests;
    sb.app().device().statusBar().onChange = [&](const std::string& op, const std::string& name) {
      requests.push_back(op + " " + name);
    };
    for (const char* request :
         {"addStatusBarIcon", "addStatusBarIcon", "removeStatusBarIcon", "removeStatusBarIcon"}) {
      ASSERT_TRUE(f.device.announce(sb.app(), std::string("com.Corvanta.HushwallSettings.") + request));
      EXPECT_EQ(sb.iconShown(), request[0] == 'a') << request;
    }
    EXPECT_EQ(requests, (std::vector<std::string>{"add HSWL", "add HSWL", "remove HSWL", "remove HSWL"}));
  });

  // Without SaveHistory a push leaves no row, but the icon follows its flag.
  f.device.writeSettings(settingsFlags(true, false, true, false));
  runInChildProcess([&] {
    TestSpringBoard sb(f.device, HUSHWALL_LIBRARY_PATH);
    sb.deliverToBanner(sb.bulletin(kMessengerId, remoteContext("Bob: again", "4917012345")));
    EXPECT_EQ(sb.shown("banner"), 0u);
    EXPECT_EQ(f.device.history().size(), 1u);
    EXPECT_TRUE(sb.iconShown());
  });
}

TEST(BulletinHooks, ListsDropBlockedBulletinsWithoutAnySideEffect) {
  Fixture f(settingsFlags(true, true, true, true));
  runInChildProcess([&] {
    TestSpringBoard sb(f.device, HUSHWALL_LIBRARY_PATH, Value::integer(3));
    sb.deliverToLists(sb.bulletin(kMessengerId, localContext(kBlockedJid)));
    sb.deliverToLists(sb.bulletin(kMessengerId, remoteContext("Bob: hi", kBlockedJid)));
    EXPECT_EQ(sb.shown("lockscreen"), 0u);
    EXPECT_EQ(sb.shown("notificationCenter"), 0u);
    sb.deliverToLists(sb.bulletin(kMessengerId, localContext(kAllowedJid)));
    EXPECT_EQ(sb.shown("lockscreen"), 1u);
    EXPECT_EQ(sb.shown("notificationCenter"), 1u);
    // Recording, the icon, the vibration and the badge are the banner's.
    EXPECT_TRUE(f.device.history().empty());
    EXPECT_FALSE(sb.iconShown());
    EXPECT_EQ(sb.vibrations(), 0);
    EXPECT_EQ(sb.messengerBadge(), Value::integer(3));
  });
}

}  // namespace
}  // namespace hushwall::testing
