// hushwallctl run as a program, against a real device root, database and bus.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/linux/dbus_notify_center.h"
#include "platform/linux/plist_file.h"
#include "startup/notification_names.h"
#include "startup/settings.h"
#include "testing/database_rows.h"
#include "testing/private_bus.h"
#include "testing/running_program.h"
#include "testing/temp_device_root.h"
#include "tools/companion_test_programs.h"
#include "tools/device_root.h"

namespace hushwall::testing {
namespace {

namespace fs = std::filesystem;
using host::T;
using host::Value;
using std::chrono::milliseconds;

int run(const TempDeviceRoot& root, std::vector<std::string> args, std::string* out = nullptr,
        std::string* err = nullptr) {
  return ctl(root.path(), std::move(args), out, err);
}

// Runs hushwallctl on a terminal of its own, as a user at a shell would,
// typing `answer` once it has asked; returns the exit status and what the
// terminal showed.
int runOnTerminal(const TempDeviceRoot& root, std::vector<std::string> args, const std::string& answer,
                  std::string* shown) {
  args = ctlCommand(root.path(), std::move(args));
  int terminal = -1;
  pid_t pid = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  if (pid < 0) throw std::runtime_error("forkpty failed");
  if (pid == 0) {
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  bool answered = false;
  for (;;) {
    pollfd poll{terminal, POLLIN, 0};
    if (::poll(&poll, 1, 100) > 0) {
      char buffer[512];
      ssize_t n = ::read(terminal, buffer, sizeof buffer);
      if (n <= 0) break;  // the program ended and closed its side
      shown->append(buffer, static_cast<std::size_t>(n));
    }
    if (!answered && shown->find("[y/N]") != std::string::npos) {
      const std::string line = answer + "\n";
      answered = ::write(terminal, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    }
    if (std::chrono::steady_clock::now() > deadline) ::kill(pid, SIGKILL);
  }
  ::close(terminal);
  int status = 0;
  ::waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A device with a running bus, and a process of its own listening on it.
struct RunningDevice {
  RunningDevice() { root.installDatabase(); }
  // Counts the notifications of `name` that arrive from now on.
  int* observe(const std::string& name) {
    counts.push_back(std::make_unique<int>(0));
    int* count = counts.back().get();
    center.addObserver(name, [count] { ++*count; }, host::SuspensionBehavior::kHold);
    return count;
  }
  // Posts a marker after everything under test and waits for it: once it has
  // arrived, anything the program posted before it has arrived too.
  void settle(const std::string& name, int* count, int expected) {
    ASSERT_EQ(run(root, {"post", name}), 0);
    EXPECT_TRUE(center.runUntil([&] { return *count >= expected + 1; }, milliseconds(5000)));
    EXPECT_EQ(*count, expected + 1) << name;
    --*count;  // the marker itself does not count
  }
  TempDeviceRoot root;
  PrivateBus bus{root.path()};
  linux_platform::DBusNotifyCenter center{bus.address()};
  std::vector<std::unique_ptr<int>> counts;
};

// What the companion layer does is tested on its own (the blacklist editor,
// the history list); here each command's words, output, exit status and
// announcement, as a user at a shell sees them.
TEST(Hushwallctl, SettingsBlacklistAndIconChangesAreWrittenAndAnnounced) {
  RunningDevice device;
  int* settingsChanged = device.observe(kSettingsChangedNotification);
  int* contactsChanged = device.observe(kContactsChangedNotification);
  int* hide = device.observe(kRemoveStatusBarIconNotification);
  int* add = device.observe(kAddStatusBarIconNotification);
  const std::string file = device.root.native(kSettingsFilePath);
  auto settings = [&] { return linux_platform::readPlistDictionary(file).value_or(host::Dict{}); };
  const Value yes = Value::boolean(true), no = Value::boolean(false);

  // replace writes exactly its keys as a binary property list; set keeps the
  // keys it is not given.
  ASSERT_EQ(run(device.root, {"settings", "replace", "Enabled=true", "Vibrate=YES", "LockSettings=0"}), 0);
  EXPECT_EQ(fileBytes(file).substr(0, 8), "bplist00");
  EXPECT_EQ(settings(), (host::Dict{{T("Enabled"), yes}, {T("Vibrate"), yes}, {T("LockSettings"), no}}));
  ASSERT_EQ(run(device.root, {"settings", "set", "Enabled=no", "ShowStatusbarIcon=1"}), 0);
  EXPECT_EQ(settings(), (host::Dict{{T("Enabled"), no}, {T("Vibrate"), yes}, {T("LockSettings"), no},
                                    {T("ShowStatusbarIcon"), yes}}));
  // Bad words change nothing, even when good ones come first.
  const std::string before = fileBytes(file);
  std::string out, err;
  for (const auto& [words, message] : std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{"settings", "set", "ShowStatusBarIcon=1"}, "ShowStatusBarIcon"},
           {{"settings", "set", "SaveHistory=false", "Vibrate=maybe"}, "maybe"},
           {{"settings", "replace", "Enabled"}, "Enabled"},
           {{"blacklist", "add", "4917x0"}, "malformed phone number"},
           {{"post", "nodot"}, "nodot"}}) {
    EXPECT_EQ(run(device.root, words, nullptr, &err), 2) << words.back();
    EXPECT_NE(err.find(message), std::string::npos) << err;
  }
  EXPECT_EQ(fileBytes(file), before);
  ASSERT_EQ(run(device.root, {"settings", "replace", "SaveHistory=false"}), 0);
  ASSERT_EQ(run(device.root, {"settings", "show", "--json"}, &out), 0);
  EXPECT_EQ(nlohmann::json::parse(out), nlohmann::json({{"SaveHistory", false}}));

  ASSERT_EQ(run(device.root, {"blacklist", "add", "+49 (170) 123-45", "--name", "Mallory"}), 0);
  ASSERT_EQ(run(device.root, {"blacklist", "add", "4930999"}), 0);
  ASSERT_EQ(run(device.root, {"blacklist", "list", "--json"}, &out), 0);
  nlohmann::json rows = nlohmann::json::parse(out);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0]["phoneNumber"], "+49 (170) 123-45");
  EXPECT_EQ(rows[0]["name"], "Mallory");
  EXPECT_EQ(rows[1]["phoneNumber"], "4930999");
  ASSERT_EQ(run(device.root, {"blacklist", "remove", "+49 (170) 123-45"}), 0);
  EXPECT_EQ(run(device.root, {"blacklist", "remove", "493099"}, nullptr, &err), 1);
  EXPECT_NE(err.find("not on the blacklist"), std::string::npos) << err;
  ASSERT_EQ(run(device.root, {"blacklist", "list", "--json"}, &out), 0);
  EXPECT_EQ(nlohmann::json::parse(out).size(), 1u);

  EXPECT_EQ(run(device.root, {"icon", "hide"}), 0);
  EXPECT_EQ(run(device.root, {"post", kAddStatusBarIconNotification}), 0);
  EXPECT_TRUE(device.center.runUntil([&] { return *hide == 1 && *add == 1; }, milliseconds(5000)));
  // Three settings written, three blacklist changes, and nothing else.
  device.settle(kSettingsChangedNotification, settingsChanged, 3);
  device.settle(kContactsChangedNotification, contactsChanged, 3);
}

TEST(Hushwallctl, HistoryRowsGoOneByOneOrAllOnlyWhenConfirmed) {
  RunningDevice device;
  int* changed = device.observe(kNewMessagedAddedNotification);
  const std::string data = "/var/mobile/Library/Preferences/Hushwall";
  fs::create_directories(device.root.native(data + "/4917"));
  std::ofstream(device.root.native(data + "/4917/4917-1.000000.png")) << "png";
  std::ofstream(device.root.native(data + "/4917/4917-2.000000.png")) << "png!";
  execSql(device.root.databaseFile(),
          "INSERT INTO History (phoneNumber, name, message, date, blockType, mediaType, mediaFileName,"
          " mediaURL, isMine) VALUES ('4917', 'Spam', 'one', 1400000000, 0, 1, '" + data +
          "/4917/4917-1.000000.png', '', 0), ('4917', 'Spam', 'two', 1400000001, 0, 1, '" + data +
          "/4917/4917-2.000000.png', '', 0), ('4930', NULL, '', 1400000002.5, 1, 0, '', 'u', 1);");
  auto rows = [&] { return readHistoryRows(device.root.databaseFile()).size(); };

  // Rows as JSON keep SQLite's types; pictures are listed by path with sizes.
  std::string out, err;
  ASSERT_EQ(run(device.root, {"history", "--json"}, &out), 0);
  nlohmann::json json = nlohmann::json::parse(out);
  ASSERT_EQ(json.size(), 3u);
  EXPECT_EQ(json[0]["phoneNumber"], "4917");
  EXPECT_TRUE(json[2]["name"].is_null());
  EXPECT_EQ(json[2]["date"], 1400000002.5);
  EXPECT_EQ(json[2]["isMine"], 1);
  EXPECT_EQ(json[2]["mediaURL"], "u");
  ASSERT_EQ(run(device.root, {"pictures", "--json"}, &out), 0);
  const std::string prefix = data.substr(1) + "/4917/4917-";
  EXPECT_EQ(nlohmann::json::parse(out), nlohmann::json::parse(R"([{"path":")" + prefix + R"(1.000000.png","size":3},
                                           {"path":")" + prefix + R"(2.000000.png","size":4}])"));

  // Without a terminal to ask on, only --yes deletes.
  EXPECT_EQ(run(device.root, {"history", "clear"}, nullptr, &err), 2);
  EXPECT_NE(err.find("add --yes"), std::string::npos) << err;
  EXPECT_EQ(run(device.root, {"history", "delete", "1"}), 2);
  EXPECT_EQ(rows(), 3u);
  // On a terminal it asks, and only "y" or "yes" goes ahead.
  std::string shown;
  EXPECT_EQ(runOnTerminal(device.root, {"history", "clear"}, "n", &shown), 1);
  EXPECT_NE(shown.find("Delete every history row and its picture? [y/N]"), std::string::npos) << shown;
  EXPECT_NE(shown.find("not confirmed; nothing changed"), std::string::npos) << shown;
  EXPECT_EQ(rows(), 3u);
  shown.clear();
  ASSERT_EQ(runOnTerminal(device.root, {"history", "delete", "3"}, "yes", &shown), 0) << shown;
  EXPECT_NE(shown.find("deleted history row 3"), std::string::npos) << shown;
  EXPECT_EQ(rows(), 2u);

  ASSERT_EQ(run(device.root, {"history", "delete", "1", "--yes"}), 0);
  EXPECT_FALSE(fs::exists(device.root.native(data + "/4917/4917-1.000000.png")));
  EXPECT_TRUE(fs::exists(device.root.native(data + "/4917/4917-2.000000.png")));
  EXPECT_EQ(run(device.root, {"history", "delete", "1", "--yes"}, nullptr, &err), 1);
  EXPECT_NE(err.find("no history row 1"), std::string::npos) << err;

  execSql(device.root.databaseFile(),
          "INSERT INTO History (phoneNumber, name, message, date, blockType, mediaType, mediaFileName,"
          " mediaURL, isMine) VALUES ('4930', 'Bob', 'three', 1400000002, 2, 0, '', '', 0);");
  ASSERT_EQ(run(device.root, {"history"}, &out), 0);
  EXPECT_NE(out.find("Bob (4930)\n  3\t"), std::string::npos) << out;
  EXPECT_NE(out.find("\tnotification\t\tBob: three\n"), std::string::npos) << out;
  EXPECT_NE(out.find("\tincoming\tpicture\tSpam: two\n"), std::string::npos) << out;
  EXPECT_NE(out.find("History rows: 2"), std::string::npos) << out;

  ASSERT_EQ(run(device.root, {"history", "clear", "--yes"}, &out), 0);
  EXPECT_NE(out.find("deleted 2 history rows and 1 pictures"), std::string::npos) << out;
  EXPECT_EQ(rows(), 0u);
  EXPECT_FALSE(fs::exists(device.root.native(data + "/4917/4917-2.000000.png")));
  EXPECT_TRUE(fs::exists(device.root.databaseFile()));
  device.settle(kNewMessagedAddedNotification, changed, 3);
}

TEST(Hushwallctl, WatchPrintsEachHistoryChange) {
  RunningDevice device;
  RunningProgram watch(ctlCommand(device.root.path(), {"watch", "--count", "2", "--timeout", "10"}));
  ASSERT_TRUE(watch.readUntilError("watching")) << watch.err;
  device.center.post(kNewMessagedAddedNotification);
  device.center.post(kSettingsChangedNotification);  // not watched
  device.center.post(kNewMessagedAddedNotification);
  EXPECT_EQ(watch.finish(), 0) << watch.err;
  EXPECT_EQ(watch.out, std::string("notification 1: ") + kNewMessagedAddedNotification +
                           "\nnotification 2: " + kNewMessagedAddedNotification + "\n");

  EXPECT_EQ(run(device.root, {"watch", "--count", "1", "--timeout", "0.2"}), 1);
  EXPECT_EQ(run(device.root, {"watch", "--timeout", "0.2"}), 0);
}

TEST(Hushwallctl, DeviceProblemsAreReportedClearly) {
  TempDeviceRoot root;  // no bus, no database
  std::ofstream(root.native(tools::kDeviceRootMarker)) << "";
  std::string err;
  // A stopped device misses nothing: its processes read the file in full when
  // they start. A bare post, which changes nothing, is refused.
  EXPECT_EQ(run(root, {"settings", "set", "Enabled=1"}, nullptr, &err), 0);
  EXPECT_NE(err.find("no process was running (the device's bus is not running at " + root.path()),
            std::string::npos)
      << err;
  auto saved = linux_platform::readPlistDictionary(root.native(kSettingsFilePath));
  ASSERT_TRUE(saved.has_value());
  EXPECT_EQ(saved->at(host::T("Enabled")), host::Value::boolean(true));
  EXPECT_EQ(run(root, {"icon", "hide"}), 3);

  EXPECT_EQ(run(root, {"blacklist", "list"}, nullptr, &err), 1);
  EXPECT_NE(err.find(root.databaseFile()), std::string::npos) << err;

  const std::string missing = root.path() + "/nowhere";
  EXPECT_EQ(ctl(missing, {"history"}, nullptr, &err), 2);
  EXPECT_NE(err.find("device root '" + missing + "' does not exist"), std::string::npos) << err;
}

}  // namespace
}  // namespace hushwall::testing
