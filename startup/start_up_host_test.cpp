// Start-up as the device runs it: the library loaded into a simulated
// process, which hook group (if any) it installs, which observers it adds,
// and the seeding of the database in SpringBoard.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "simhost/host_log.h"
#include "simhost/springboard_classes.h"
#include "simhost/test_device.h"
#include "simhost/test_springboard.h"
#include "testing/child_process.h"

namespace hushwall::testing {
namespace {

namespace fs = std::filesystem;
using host::T;
using host::Value;
using linux_platform::ObjectRuntime;
using simhost::AppClasses;
using simhost::SimulatedApp;

const std::vector<std::string> kSpringBoardClasses = {
    "SBBulletinBannerController", "SBLockScreenNotificationListController",
    "SBBulletinObserverViewController", "BBBulletin", "SBApplication", "SBApplicationController"};
const std::vector<std::string> kWhatsAppClasses = {
    "ChatListViewController", "WABlockBasedActionSheet", "WhatsAppAppDelegate", "XMPPConnection"};
const char kDataDirectory[] = "/var/mobile/Library/Preferences/Hushwall";

// Every method of the named classes (instance and class side), as the host
// runtime holds it: implementation and type encoding.
std::map<std::string, std::pair<host::IMP, std::string>> methodsOf(
    ObjectRuntime& runtime, const std::vector<std::string>& classes) {
  std::map<std::string, std::pair<host::IMP, std::string>> methods;
  for (const std::string& name : classes) {
    Value cls = runtime.getClass(name);
    if (cls.isNil()) continue;
    for (const auto& [selector, m] : ObjectRuntime::asClass(cls)->methods) {
      methods["-[" + name + " " + selector + "]"] = {m.imp, m.types};
    }
    for (const auto& [selector, m] : ObjectRuntime::asClass(runtime.getMetaClass(cls))->methods) {
      methods["+[" + name + " " + selector + "]"] = {m.imp, m.types};
    }
  }
  return methods;
}

std::vector<std::string> observed(SimulatedApp& app) {
  std::vector<std::string> names;
  for (const auto& o : app.device().notifyCenter().observations()) {
    EXPECT_EQ(o.behavior, host::SuspensionBehavior::kHold) << o.name;
    names.push_back(o.name);
  }
  return names;
}

const std::vector<std::string> kCommonObservers = {
    "com.Corvanta.HushwallSettings.settingsChanged",
    "com.Corvanta.HushwallSettings.contactsChanged"};

// Starts a process, checks that loading the library changes no host method
// and adds only the two common observers.
void expectNoHooks(const TestDevice& device, const host::OptText& identifier, AppClasses classes,
                   const std::vector<std::string>& classNames) {
  runInChildProcess([&] {
    SimulatedApp app(device.root(), identifier, classes);
    auto before = methodsOf(app.runtime(), classNames);
    ASSERT_FALSE(before.empty());
    app.loadLibrary(HUSHWALL_LIBRARY_PATH);
    EXPECT_EQ(methodsOf(app.runtime(), classNames), before);
    EXPECT_EQ(observed(app), kCommonObservers);
  });
}

std::string contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(StartUp, TheMessengerInAnyCaseOrUnnamedGetsItsGroupAndOtherProcessesNoHooks) {
  // The messenger's group, also for a process without an identifier; the
  // messenger never seeds the database.
  TestDevice device;
  device.installSettingsBundle();
  device.writeSettings(settingsFlags(true, true, true, true));
  for (const host::OptText& identifier : {host::OptText(T("NET.whatsapp.whatsapp")), host::OptText()}) {
    runInChildProcess([&] {
      SimulatedApp app(device.root(), identifier, AppClasses::kWhatsApp);
      app.loadLibrary(HUSHWALL_LIBRARY_PATH);
      Value delegate = app.runtime().getClass("WhatsAppAppDelegate");
      EXPECT_EQ(app.runtime().typeEncoding(delegate, "deleteAllMessagesBlacklisted"), "v@:");
      EXPECT_EQ(app.runtime().typeEncoding(delegate, "getSessionsWithPhoneNumber:"), "@@:@");
      EXPECT_EQ(observed(app), kCommonObservers);
    });
  }
  // Any other process, or a group whose classes the host lacks: no method
  // changes, however the switches stand.
  expectNoHooks(device, std::nullopt, AppClasses::kSpringBoard, kSpringBoardClasses);
  expectNoHooks(device, T("com.example.notes"), AppClasses::kSpringBoard, kSpringBoardClasses);
  expectNoHooks(device, T("com.apple.springboard.extra"), AppClasses::kWhatsApp, kWhatsAppClasses);
  EXPECT_FALSE(fs::exists(device.native(kDataDirectory)));
}

// SpringBoard, whatever the case of its identifier: its group of hooks with
// their types kept, the icon observers, and a fresh database seeded only into
// a folder without one.
TEST(StartUp, SpringBoardIsHookedAndSeedsOnlyAFolderWithoutDatabase) {
  TestDevice device;
  device.installSettingsBundle();
  const std::string data = device.native(kDataDirectory);
  fs::create_directories(data + "/4917012345");
  std::ofstream(data + "/notes.txt") << "left over";
  std::ofstream(data + "/4917012345/4917012345-1.png") << "picture";
  runInChildProcess([&] {
    SimulatedApp app(device.root(), T("COM.Apple.SpringBoard"), AppClasses::kSpringBoard);
    auto before = methodsOf(app.runtime(), kSpringBoardClasses);
    app.loadLibrary(HUSHWALL_LIBRARY_PATH);
    auto after = methodsOf(app.runtime(), kSpringBoardClasses);
    for (const char* replaced :
         {"-[SBBulletinBannerController observer:addBulletin:forFeed:]",
          "-[SBLockScreenNotificationListController observer:addBulletin:forFeed:]",
          "-[SBBulletinObserverViewController observer:addBulletin:forFeed:]",
          "-[SBBulletinBannerController "
          "observer:addBulletin:forFeed:playLightsAndSirens:withReply:]",
          "-[SBLockScreenNotificationListController "
          "observer:addBulletin:forFeed:playLightsAndSirens:withReply:]",
          "-[SBApplication setBadge:]"}) {
      EXPECT_NE(after[replaced].first, before[replaced].first) << replaced;
      EXPECT_EQ(after[replaced].second, before[replaced].second) << replaced;
    }
    EXPECT_EQ(
        after["-[SBBulletinBannerController addManualBadgeIncrementForBundleIdentifier:]"].second,
        "v@:@");
    EXPECT_EQ(after.size(), before.size() + 1);
    std::vector<std::string> expected = kCommonObservers;
    expected.push_back("com.Corvanta.HushwallSettings.removeStatusBarIcon");
    expected.push_back("com.Corvanta.HushwallSettings.addStatusBarIcon");
    EXPECT_EQ(observed(app), expected);
  });
  EXPECT_FALSE(fs::exists(data + "/notes.txt"));
  EXPECT_FALSE(fs::exists(data + "/4917012345"));
  EXPECT_EQ(contents(device.databaseFile()),
            contents(device.native("/Library/PreferenceBundles/HushwallSettings.bundle/HSWL.db")));

  // A database that is there, even an empty file, is never replaced.
  std::ofstream(device.databaseFile(), std::ios::trunc).flush();
  std::ofstream(data + "/notes.txt") << "kept";
  runInChildProcess([&] {
    SimulatedApp app(device.root(), T("com.apple.springboard"), AppClasses::kSpringBoard);
    app.loadLibrary(HUSHWALL_LIBRARY_PATH);
  });
  EXPECT_EQ(fs::file_size(device.databaseFile()), 0u);
  EXPECT_EQ(contents(data + "/notes.txt"), "kept");

  // No settings bundle to seed from: SpringBoard still runs, unblocked.
  TestDevice bare;
  bare.writeSettings(settingsFlags(true, true, true, true));
  runInChildProcess([&] {
    TestSpringBoard sb(bare, HUSHWALL_LIBRARY_PATH);
    sb.deliver(sb.bulletin(kMessengerId, localContext("4917012345@s.whatsapp.net")));
    EXPECT_EQ(sb.shown("banner"), 1u);
  });
  // The folder is made afresh all the same; only the copy had nothing to copy.
  EXPECT_TRUE(fs::is_directory(bare.native(kDataDirectory)));
  EXPECT_NE(contents(bare.databaseFile()).size(), fs::file_size(HUSHWALL_TEMPLATE_DB));
}

// Gives `target` copies of the stand-in SpringBoard classes named.
void copySpringBoardClasses(ObjectRuntime& target, const std::vector<std::string>& names) {
  ObjectRuntime full;
  simhost::registerSpringBoardClasses(full);
  for (const std::string& name : names) {
    target.registerClass(name);
    Value cls = full.getClass(name);
    for (const auto& [selector, m] : ObjectRuntime::asClass(cls)->methods) {
      target.addHostMethod(name, selector, m.imp);
    }
    for (const auto& [selector, m] : ObjectRuntime::asClass(full.getMetaClass(cls))->methods) {
      target.addHostMethod(name, selector, m.imp, true);
    }
  }
}

TEST(StartUp, AHostLackingClassesStartsAndTheOtherHooksWork) {
  TestDevice device;
  device.installDatabase();
  device.addToBlacklist("4917012345");
  device.writeSettings(settingsFlags(true, true, false, false));
  runInChildProcess([&] {
    SimulatedApp app(device.root(), T("com.apple.springboard"), AppClasses::kNone);
    copySpringBoardClasses(app.runtime(), {"SBBulletinBannerController",
                                           "SBBulletinObserverViewController", "BBBulletin",
                                           "SBApplication"});
    app.loadLibrary(HUSHWALL_LIBRARY_PATH);
    Value banner = app.make("SBBulletinBannerController");
    Value center = app.make("SBBulletinObserverViewController");
    auto deliver = [&](const std::string& jid) {
      Value bulletin = simhost::makeBulletin(app.runtime(), std::string(kMessengerId),
                                             localContext(jid), std::string("Alice: hi"));
      for (const Value& controller : {banner, center}) {
        app.send(controller, "observer:addBulletin:forFeed:",
                 {Value(), bulletin, Value::integer(0)});
      }
    };
    deliver("4917012345@s.whatsapp.net");
    EXPECT_EQ(simhost::hostLog().shown["banner"].size(), 0u);
    EXPECT_EQ(simhost::hostLog().shown["notificationCenter"].size(), 0u);
    // No application controller yet: the increment does nothing.
    deliver("4930999@s.whatsapp.net");
    EXPECT_EQ(simhost::hostLog().shown["banner"].size(), 1u);
    EXPECT_EQ(simhost::hostLog().shown["notificationCenter"].size(), 1u);
    // Once the class exists, the next increment finds it.
    copySpringBoardClasses(app.runtime(), {"SBApplicationController"});
    Value messenger = simhost::addApplication(app.runtime(), kMessengerId, Value::integer(3));
    deliver("4930999@s.whatsapp.net");
    EXPECT_EQ(app.send(messenger, "badgeNumberOrString"), Value::integer(4));
  });
}

}  // namespace
}  // namespace hushwall::testing
