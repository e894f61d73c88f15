#include "platform/linux/dbus_notify_center.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include <sdbus-c++/sdbus-c++.h>

#include "testing/background_process.h"
#include "testing/private_bus.h"
#include "testing/temp_device_root.h"

namespace hushwall::linux_platform {
namespace {

using namespace std::chrono_literals;
using host::SuspensionBehavior;

const std::string kSettings = "com.Corvanta.HushwallSettings.settingsChanged";
const std::string kContacts = "com.Corvanta.HushwallSettings.contactsChanged";

// A private daemon and a centre on it that counts the settings posts it hears.
class DBusNotifyCenterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    center.addObserver(kSettings, [&] { ++settings; ranOn = std::this_thread::get_id(); },
                       SuspensionBehavior::kHold);
  }
  testing::PrivateBus bus;
  DBusNotifyCenter center{bus.address()};
  int settings = 0;
  std::thread::id ranOn;
};

TEST_F(DBusNotifyCenterTest, DeliversOwnPostsOnlyFromTheLoopOfTheCallingThread) {
  int contacts = 0;
  center.addObserver(kContacts, [&] { ++contacts; }, SuspensionBehavior::kHold);
  EXPECT_FALSE(center.processPending());
  center.post(kSettings);
  center.post(kSettings);
  // Both come back over the socket and wait there until the loop runs.
  auto data = center.pollData();
  pollfd fd{data.fd, data.events, 0};
  ASSERT_TRUE(data.getPollTimeout() == 0 || ::poll(&fd, 1, 5000) == 1);
  std::this_thread::sleep_for(100ms);
  EXPECT_EQ(settings, 0);
  EXPECT_TRUE(center.processPending());
  EXPECT_TRUE(center.runUntil([&] { return settings == 2; }, 5s));
  EXPECT_EQ(ranOn, std::this_thread::get_id());
  center.runFor(100ms);
  EXPECT_EQ(settings, 2);
  EXPECT_EQ(contacts, 0);
  EXPECT_FALSE(center.processPending());

  center.post(kContacts);
  EXPECT_TRUE(center.runUntil([&] { return contacts == 1; }, 5s));
  EXPECT_EQ(settings, 2);
  ASSERT_EQ(center.observations().size(), 2u);
  EXPECT_EQ(center.observations()[1].name, kContacts);
  EXPECT_EQ(center.observations()[1].behavior, SuspensionBehavior::kHold);
}

TEST(DBusNotifyCenter, SpeaksPlainSignalsWithOtherBusClients) {
  testing::TempDeviceRoot root;
  std::string device = root.path() + "/dev ice,1";  // needs escaping in the address
  testing::PrivateBus bus(device);
  EXPECT_EQ(bus.address(), deviceBusAddress(device));
  EXPECT_TRUE(std::filesystem::exists(device + "/var/run/hushwall/bus.sock"));
  DBusNotifyCenter center(bus.address());
  int settings = 0;
  center.addObserver(kSettings, [&] { ++settings; }, SuspensionBehavior::kHold);
  std::string send = "dbus-send --bus='" + bus.address() + "' --type=signal / " + kSettings;
  ASSERT_EQ(std::system(send.c_str()), 0);
  EXPECT_TRUE(center.runUntil([&] { return settings == 1; }, 5s));

  // A post looks to any other client exactly like that dbus-send.
  auto other = sdbus::createSessionBusConnectionWithAddress(bus.address());
  std::vector<std::string> seen;
  other->addMatch("type='signal',interface='com.Corvanta.HushwallSettings'",
                  [&](sdbus::Message& m) {
                    seen.push_back(m.getPath() + " " + m.getInterfaceName() + " " +
                                   m.getMemberName() + (m.isEmpty() ? "" : " with arguments"));
                  },
                  sdbus::floating_slot);
  center.post(kContacts);
  for (auto end = std::chrono::steady_clock::now() + 5s;
       seen.empty() && std::chrono::steady_clock::now() < end;) {
    while (other->processPendingRequest()) {
    }
    auto data = other->getEventLoopPollData();
    pollfd fd{data.fd, data.events, 0};
    ::poll(&fd, 1, 100);
  }
  EXPECT_EQ(seen, std::vector<std::string>{"/ com.Corvanta.HushwallSettings contactsChanged"});
}

// The listener is busy elsewhere when the post comes, and hears it later.
TEST_F(DBusNotifyCenterTest, CrossesProcessesAndHoldsUntilTheLoopRuns) {
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  testing::BackgroundProcess listener([&] {
    DBusNotifyCenter own(bus.address());
    bool heard = false;
    own.addObserver(kContacts, [&] { heard = true; }, SuspensionBehavior::kHold);
    ASSERT_EQ(::write(ready[1], "r", 1), 1);
    std::this_thread::sleep_for(300ms);
    EXPECT_TRUE(own.runUntil([&] { return heard; }, 5s));
  });
  char byte;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  center.post(kContacts);
  listener.expectSuccess();
  ::close(ready[0]);
  ::close(ready[1]);
}

TEST_F(DBusNotifyCenterTest, RoundTripsLandAnotherConnectionsPostsWithoutWaiting) {
  DBusNotifyCenter poster(bus.address());
  auto raw = sdbus::createSessionBusConnectionWithAddress(bus.address());
  std::vector<std::string> senders;
  raw->addMatch("type='signal',interface='com.Corvanta.HushwallSettings'",
                [&](sdbus::Message& m) { senders.push_back(m.getSender()); }, sdbus::floating_slot);
  // The poster's round trip means the daemon has routed its posts; the
  // listener's own round trip then has them in hand, so a non-blocking
  // delivery finds them every time, with no sleep or poll in between.
  for (int i = 1; i <= 50; ++i) {
    poster.post(kSettings);
    poster.post(kSettings);
    poster.roundTripToBus();
    center.roundTripToBus();
    EXPECT_EQ(settings, 2 * (i - 1)) << "a round trip must not deliver";
    ASSERT_TRUE(center.processPending()) << "round " << i;
    EXPECT_EQ(settings, 2 * i) << "round " << i;
  }
  EXPECT_FALSE(center.processPending());

  auto daemon = sdbus::createProxy(*raw, "org.freedesktop.DBus", "/org/freedesktop/DBus");
  daemon->createMethodCall("org.freedesktop.DBus.Peer", "Ping").send(0);
  while (raw->processPendingRequest()) {
  }
  ASSERT_EQ(senders.size(), 100u);
  EXPECT_EQ(senders.front(), poster.uniqueName());
  EXPECT_NE(poster.uniqueName(), center.uniqueName());
}

TEST_F(DBusNotifyCenterTest, PostsLeaveBeforeTheProcessEndsEvenWhenTheBusLags) {
  // The poster ends straight after posting, with no destructor to flush its
  // connection, and stops the daemon once connected, so that the socket fills
  // up and the rest of its posts wait in its own queue when it wants to exit.
  constexpr int kPosts = 30000;  // more than the socket holds
  int stopped[2];
  ASSERT_EQ(::pipe(stopped), 0);
  testing::BackgroundProcess poster([&] {
    DBusNotifyCenter own(bus.address());
    ASSERT_EQ(::kill(bus.daemonPid(), SIGSTOP), 0);
    ASSERT_EQ(::write(stopped[1], "s", 1), 1);
    for (int i = 0; i < kPosts; ++i) own.post(kSettings);
    ::_exit(0);
  });
  char byte;
  ASSERT_EQ(::read(stopped[0], &byte, 1), 1);
  std::this_thread::sleep_for(500ms);
  ASSERT_EQ(::kill(bus.daemonPid(), SIGCONT), 0);
  poster.expectSuccess();
  EXPECT_TRUE(center.runUntil([&] { return settings == kPosts; }, 10s)) << settings;
  ::close(stopped[0]);
  ::close(stopped[1]);
}

TEST_F(DBusNotifyCenterTest, RejectsNamesThatAreNoInterfaceAndMember) {
  for (std::string name : {"settingsChanged", "HushwallSettings.settingsChanged",
                           "com.Corvanta.HushwallSettings.", ".com.Corvanta.settingsChanged",
                           "com.Corvanta.Hushwall-Settings.settingsChanged",
                           "com.Corvanta.HushwallSettings.2settings"}) {
    EXPECT_THROW(center.post(name), std::invalid_argument) << name;
    EXPECT_THROW(center.addObserver(name, [] {}, SuspensionBehavior::kHold), std::invalid_argument)
        << name;
  }
  EXPECT_EQ(center.observations().size(), 1u);
  try {
    center.post("settingsChanged");
  } catch (const std::invalid_argument& e) {
    EXPECT_NE(std::string(e.what()).find("\"settingsChanged\""), std::string::npos);
  }
}

TEST(DeviceBusAddress, EscapesThePathAndFitsUnixSockets) {
  EXPECT_EQ(deviceBusAddress("/tmp/r"), "unix:path=/tmp/r/var/run/hushwall/bus.sock");
  EXPECT_EQ(deviceBusAddress("/tmp/a b,c=d"),
            "unix:path=/tmp/a%20b%2cc%3dd/var/run/hushwall/bus.sock");
  std::string root = "/" + std::string(80, 'r');  // 81 + 26 = 107 bytes, the most there is
  EXPECT_EQ(deviceBusSocketPath(root).size(), 107u);
  EXPECT_THROW(deviceBusAddress(root + "r"), std::invalid_argument);
}

}  // namespace
}  // namespace hushwall::linux_platform
