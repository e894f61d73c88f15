// hushwallctl and hushwall-model run as programs against a real device root,
// database and bus: what each command writes, prints and announces, and the
// boundaries they guard: hostile words and roots on the command line, hostile
// bytes and a hot journal in the database, links and files of the wrong kind
// in the device root, and writers racing each other.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "host/text.h"
#include "platform/linux/dbus_notify_center.h"
#include "platform/linux/device_bus_address.h"
#include "platform/linux/plist_file.h"
#include "startup/notification_names.h"
#include "startup/settings.h"
#include "testing/background_process.h"
#include "testing/database_rows.h"
#include "testing/file_tree.h"
#include "testing/private_bus.h"
#include "testing/running_program.h"
#include "testing/temp_device_root.h"
#include "tools/device_root.h"
#include "tools/display_width.h"

namespace hushwall::testing {
namespace {

namespace fs = std::filesystem;
using host::T;
using host::Value;
using std::chrono::milliseconds;
const std::string kData = "/var/mobile/Library/Preferences/Hushwall";

// `hushwallctl --root ROOT ARGS...` and `hushwall-model ARGS...`.
std::vector<std::string> ctlCommand(const std::string& root, std::vector<std::string> args) {
  args.insert(args.begin(), {HUSHWALLCTL_PATH, "--root", root});
  return args;
}
int ctl(const std::string& root, std::vector<std::string> args, std::string* out = nullptr,
        std::string* err = nullptr) {
  return runProgram(ctlCommand(root, std::move(args)), out, err);
}
int model(std::vector<std::string> args, std::string* out = nullptr, std::string* err = nullptr) {
  args.insert(args.begin(), HUSHWALL_MODEL_PATH);
  return runProgram(std::move(args), out, err);
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
    ASSERT_EQ(ctl(root.path(), {"post", name}), 0);
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
// the history list: which rows and pictures go); here each command's words,
// output, exit status and announcement, as a user at a shell sees them.
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
  ASSERT_EQ(ctl(device.root.path(), {"settings", "replace", "Enabled=true", "Vibrate=YES", "LockSettings=0"}), 0);
  EXPECT_EQ(fileBytes(file).substr(0, 8), "bplist00");
  EXPECT_EQ(settings(), (host::Dict{{T("Enabled"), yes}, {T("Vibrate"), yes}, {T("LockSettings"), no}}));
  ASSERT_EQ(ctl(device.root.path(), {"settings", "set", "Enabled=no", "ShowStatusbarIcon=1"}), 0);
  EXPECT_EQ(settings(), (host::Dict{{T("Enabled"), no}, {T("Vibrate"), yes}, {T("LockSettings"), no},
                                    {T("ShowStatusbarIcon"), yes}}));
  std::string out, err;
  ASSERT_EQ(ctl(device.root.path(), {"settings", "replace", "SaveHistory=false"}), 0);
  ASSERT_EQ(ctl(device.root.path(), {"settings", "show", "--json"}, &out), 0);
  EXPECT_EQ(nlohmann::json::parse(out), nlohmann::json({{"SaveHistory", false}}));

  ASSERT_EQ(ctl(device.root.path(), {"blacklist", "add", "+49 (170) 123-45", "--name", "Mallory"}), 0);
  ASSERT_EQ(ctl(device.root.path(), {"blacklist", "add", "4930999"}), 0);
  ASSERT_EQ(ctl(device.root.path(), {"blacklist", "list", "--json"}, &out), 0);
  nlohmann::json rows = nlohmann::json::parse(out);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0]["phoneNumber"], "+49 (170) 123-45");
  EXPECT_EQ(rows[0]["name"], "Mallory");
  EXPECT_EQ(rows[1]["phoneNumber"], "4930999");
  ASSERT_EQ(ctl(device.root.path(), {"blacklist", "remove", "+49 (170) 123-45"}), 0);
  EXPECT_EQ(ctl(device.root.path(), {"blacklist", "remove", "493099"}, nullptr, &err), 1);
  EXPECT_NE(err.find("not on the blacklist"), std::string::npos) << err;
  ASSERT_EQ(ctl(device.root.path(), {"blacklist", "list", "--json"}, &out), 0);
  EXPECT_EQ(nlohmann::json::parse(out).size(), 1u);

  EXPECT_EQ(ctl(device.root.path(), {"icon", "hide"}), 0);
  EXPECT_EQ(ctl(device.root.path(), {"post", kAddStatusBarIconNotification}), 0);
  EXPECT_TRUE(device.center.runUntil([&] { return *hide == 1 && *add == 1; }, milliseconds(5000)));
  // Three settings written, three blacklist changes, and nothing else.
  device.settle(kSettingsChangedNotification, settingsChanged, 3);
  device.settle(kContactsChangedNotification, contactsChanged, 3);
}

TEST(Hushwallctl, HistoryRowsGoOneByOneOrAllOnlyWhenConfirmed) {
  RunningDevice device;
  int* changed = device.observe(kNewMessagedAddedNotification);
  fs::create_directories(device.root.native(kData + "/4917"));
  std::ofstream(device.root.native(kData + "/4917/4917-1.000000.png")) << "png";
  std::ofstream(device.root.native(kData + "/4917/4917-2.000000.png")) << "png!";
  execSql(device.root.databaseFile(),
          "INSERT INTO History (phoneNumber, name, message, date, blockType, mediaType, mediaFileName,"
          " mediaURL, isMine) VALUES ('4917', 'Spam', 'one', 1400000000, 0, 1, '" + kData +
          "/4917/4917-1.000000.png', '', 0), ('4917', 'Spam', 'two', 1400000001, 0, 1, '" + kData +
          "/4917/4917-2.000000.png', '', 0), ('4930', NULL, '', 1400000002.5, 1, 0, '', 'u', 1);");
  auto rows = [&] { return readHistoryRows(device.root.databaseFile()).size(); };

  // Rows as JSON keep SQLite's types; pictures are listed by path with sizes.
  std::string out, err;
  ASSERT_EQ(ctl(device.root.path(), {"history", "--json"}, &out), 0);
  nlohmann::json json = nlohmann::json::parse(out);
  ASSERT_EQ(json.size(), 3u);
  EXPECT_EQ(json[0]["phoneNumber"], "4917");
  EXPECT_TRUE(json[2]["name"].is_null());
  EXPECT_EQ(json[2]["date"], 1400000002.5);
  EXPECT_EQ(json[2]["isMine"], 1);
  EXPECT_EQ(json[2]["mediaURL"], "u");
  ASSERT_EQ(ctl(device.root.path(), {"pictures", "--json"}, &out), 0);
  const std::string prefix = kData.substr(1) + "/4917/4917-";
  EXPECT_EQ(nlohmann::json::parse(out), nlohmann::json::parse(R"([{"path":")" + prefix + R"(1.000000.png","size":3},
                                           {"path":")" + prefix + R"(2.000000.png","size":4}])"));

  // Without a terminal to ask on, only --yes deletes.
  EXPECT_EQ(ctl(device.root.path(), {"history", "clear"}, nullptr, &err), 2);
  EXPECT_NE(err.find("add --yes"), std::string::npos) << err;
  EXPECT_EQ(ctl(device.root.path(), {"history", "delete", "1"}), 2);
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

  ASSERT_EQ(ctl(device.root.path(), {"history", "delete", "1", "--yes"}), 0);
  EXPECT_EQ(ctl(device.root.path(), {"history", "delete", "1", "--yes"}, nullptr, &err), 1);
  EXPECT_NE(err.find("no history row 1"), std::string::npos) << err;

  execSql(device.root.databaseFile(),
          "INSERT INTO History (phoneNumber, name, message, date, blockType, mediaType, mediaFileName,"
          " mediaURL, isMine) VALUES ('4930', 'Bob', 'three', 1400000002, 2, 0, '', '', 0);");
  ASSERT_EQ(ctl(device.root.path(), {"history"}, &out), 0);
  EXPECT_NE(out.find("Bob (4930)\n  3\t"), std::string::npos) << out;
  EXPECT_NE(out.find("\tnotification\t\tBob: three\n"), std::string::npos) << out;
  EXPECT_NE(out.find("\tincoming\tpicture\tSpam: two\n"), std::string::npos) << out;
  EXPECT_NE(out.find("History rows: 2"), std::string::npos) << out;

  ASSERT_EQ(ctl(device.root.path(), {"history", "clear", "--yes"}, &out), 0);
  EXPECT_NE(out.find("deleted 2 history rows and 1 pictures"), std::string::npos) << out;
  EXPECT_EQ(rows(), 0u);
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

  EXPECT_EQ(ctl(device.root.path(), {"watch", "--count", "1", "--timeout", "0.2"}), 1);
  EXPECT_EQ(ctl(device.root.path(), {"watch", "--timeout", "0.2"}), 0);
}

TEST(Hushwallctl, DeviceProblemsAreReportedClearly) {
  TempDeviceRoot root;  // no bus, no database
  std::ofstream(root.native(tools::kDeviceRootMarker)) << "";
  std::string err;
  // A stopped device misses nothing: its processes read the file in full when
  // they start. A bare post, which changes nothing, is refused.
  EXPECT_EQ(ctl(root.path(), {"settings", "set", "Enabled=1"}, nullptr, &err), 0);
  EXPECT_NE(err.find("no process was running (the device's bus is not running at " + root.path()),
            std::string::npos)
      << err;
  auto saved = linux_platform::readPlistDictionary(root.native(kSettingsFilePath));
  ASSERT_TRUE(saved.has_value());
  EXPECT_EQ(saved->at(host::T("Enabled")), host::Value::boolean(true));
  EXPECT_EQ(ctl(root.path(), {"icon", "hide"}), 3);

  EXPECT_EQ(ctl(root.path(), {"blacklist", "list"}, nullptr, &err), 1);
  EXPECT_NE(err.find(root.databaseFile()), std::string::npos) << err;

}

std::vector<std::string> entriesOf(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory)) names.push_back(entry.path().filename());
  return names;
}

TEST(CompanionCommandLine, HostileWordsAndRootsAreRefusedBeforeAnythingChanges) {
  TempDeviceRoot device;
  device.installDatabase();
  PrivateBus bus(device.path());
  execSql(device.databaseFile(), "INSERT INTO Blacklist (name, phoneNumber) VALUES ('Ann', '4917')");
  const std::string database = fileBytes(device.databaseFile());
  const std::string settings = device.native(kSettingsFilePath);

  struct Case {
    std::vector<std::string> words;
    std::string message;
  };
  const Case cases[] = {
      {{"blacklist", "add", "4930", "--name", "bad\xFF"}, "'bad\xEF\xBF\xBD' is not valid UTF-8"},
      {{"blacklist", "add", "49\xC0\xAF" "30"}, "not valid UTF-8"},
      {{"blacklist", "add", "4917x0"}, "malformed phone number"},
      {{"settings", "set", "ShowStatusBarIcon=1"}, "ShowStatusBarIcon"},
      {{"settings", "set", "SaveHistory=false", "Vibrate=maybe"}, "maybe"},  // good words first
      {{"settings", "replace", "Enabled"}, "Enabled"},
      {{"post", "nodot"}, "nodot"},
      {{"settings", "set", "Enabled=\xFE"}, "not valid UTF-8"},
      {{"post", "com.Corvanta.\xED\xA0\x80"}, "not valid UTF-8"},
      {{"watch", "--count", "-1"}, "--count: must be a whole number from 0 to 2147483647 in decimal"},
      {{"watch", "--count", "2147483648"}, "whole number"},
      {{"watch", "--count", "010"}, "without sign or leading zeros, got '010'"},
      {{"history", "delete", "010", "--yes"}, "from 1 to 9223372036854775807"},
      {{"history", "delete", "99999999999999999999", "--yes"}, "got '99999999999999999999'"},
      {{"history", "delete", "9223372036854775808", "--yes"}, "whole number"},
      {{"history", "delete", "0x10", "--yes"}, "whole number"},
      {{"history", "delete", "+1", "--yes"}, "whole number"},
      {{"history", "delete", "0", "--yes"}, "whole number"},
      {{"watch", "--timeout", "nan"}, "--timeout: must be a number of seconds from 0 to 31536000"},
      {{"watch", "--timeout", "1e300"}, "got '1e300'"},
      {{"watch", "--timeout", "-0.5"}, "seconds"},
      {{"watch", "--timeout", "inf"}, "seconds"},
      {{"watch", "--timeout", "0x10"}, "seconds"},
  };
  for (const Case& c : cases) {
    std::string err;
    EXPECT_EQ(ctl(device.path(), c.words, nullptr, &err), 2) << c.words[0] << " " << c.words.back();
    EXPECT_NE(err.find(c.message), std::string::npos) << err;
    EXPECT_TRUE(host::isValidUtf8(err)) << err;
  }
  EXPECT_EQ(ctl(device.path(), {"watch", "--count", "0", "--timeout", "31536000"}), 0);
  EXPECT_EQ(fileBytes(device.databaseFile()), database);
  EXPECT_FALSE(fs::exists(settings));

  // Directories that are not a device, the machine's own root among them,
  // and one that does not exist: refused, and nothing is written there, not
  // even a bus socket.
  TempDeviceRoot empty;
  const bool machineHadVarMobile = fs::exists("/var/mobile");
  const std::string up = empty.path() + "/../" + fs::path(empty.path()).filename().string();
  for (const auto& [root, message] : std::vector<std::pair<std::string, std::string>>{
           {empty.path(), "is not a device root"}, {"/", "the machine's own root"}, {up, "is not a device root"},
           {empty.path() + "/nowhere", "device root '" + empty.path() + "/nowhere' does not exist"}}) {
    std::string err;
    EXPECT_EQ(ctl(root, {"settings", "set", "Enabled=1"}, nullptr, &err), 2) << root;
    EXPECT_EQ(ctl(root, {"blacklist", "add", "4917"}, nullptr, &err), 2) << root;
    EXPECT_NE(err.find(message), std::string::npos) << err;
    EXPECT_NE(model({"history", "--root", root}), 0) << root;
    EXPECT_NE(model({"settings", "--root", root}), 0) << root;
  }
  EXPECT_TRUE(fs::is_empty(empty.path()));
  EXPECT_EQ(fs::exists("/var/mobile"), machineHadVarMobile);

  // hushwall-model lays a device out only in a new or empty directory (init
  // also on a device root), never over a directory holding anything else.
  std::ofstream(empty.native("/notes.txt")) << "mine";
  EXPECT_NE(model({"demo", "--root", empty.path()}), 0);
  EXPECT_NE(model({"init", "--root", empty.path()}), 0);
  EXPECT_NE(model({"demo", "--root", device.path()}), 0);
  EXPECT_EQ(entriesOf(empty.path()), std::vector<std::string>{"notes.txt"});
  EXPECT_EQ(fileBytes(device.databaseFile()), database);
  EXPECT_EQ(model({"init", "--root", device.path()}), 0);
  EXPECT_EQ(model({"init", "--root", empty.native("/fresh")}), 0);
  EXPECT_TRUE(fs::exists(empty.native("/fresh") + tools::kDeviceRootMarker));
  EXPECT_EQ(model({"history", "--root", empty.native("/fresh")}), 0);
  std::string err;
  EXPECT_EQ(model({"parse", "Ann: \xF0\x9F"}, nullptr, &err), 2);
  EXPECT_NE(err.find("not valid UTF-8"), std::string::npos) << err;
  EXPECT_EQ(runProgram({HUSHWALL_SIM_PATH, "run", "scenario\xFF.json"}, nullptr, &err), 2);
  EXPECT_NE(err.find("not valid UTF-8"), std::string::npos) << err;
  EXPECT_EQ(runProgram({HUSHWALL_SIM_PATH, "demo", "--device", "objc", "--firmware", "8.5"}, nullptr, &err), 2);
  EXPECT_NE(err.find("firmware '8.5' is not one the package runs on (7.0 to 8.4)"), std::string::npos) << err;

  // A root too long for its bus socket (a hundred bytes and the socket's
  // path): a change that could not be announced is refused, not made and
  // then reported as refused.
  const std::string longRoot = empty.path() + "/" + std::string(100 - empty.path().size() - 1, 'r');
  fs::create_directories(longRoot + kData);
  tools::markDeviceRoot(longRoot);
  fs::copy_file(device.databaseFile(), longRoot + kData + "/HSWL.db");
  EXPECT_EQ(ctl(longRoot, {"settings", "set", "Enabled=1"}, nullptr, &err), 2);
  EXPECT_NE(err.find("device root too long for its bus socket"), std::string::npos) << err;
  EXPECT_EQ(ctl(longRoot, {"blacklist", "add", "4930"}), 2);
  EXPECT_FALSE(fs::exists(longRoot + kSettingsFilePath));
  std::string out;
  ASSERT_EQ(ctl(longRoot, {"blacklist", "list", "--json"}, &out), 0);
  EXPECT_EQ(nlohmann::json::parse(out).size(), 1u);
  // A new device whose bus socket could not exist is not laid out at all:
  // a half-made root would refuse the retry as not empty.
  const std::string tooLong = empty.path() + "/" + std::string(120, 'n');
  EXPECT_NE(model({"demo", "--root", tooLong}), 0);
  EXPECT_NE(model({"init", "--root", tooLong}), 0);
  EXPECT_FALSE(fs::exists(tooLong));
}

// A text table has one line per row after its heading, each whole UTF-8,
// free of control characters, and as wide on screen as the others.
void expectAlignedTable(const std::string& table, std::size_t rows) {
  std::istringstream lines(table);
  std::string line;
  std::size_t width = 0, count = 0;
  while (std::getline(lines, line) && line.find(" rows: ") == std::string::npos) {
    ++count;
    EXPECT_TRUE(host::isValidUtf8(line)) << line;
    EXPECT_EQ(line.find_first_of("\x1B\t\r"), std::string::npos) << line;
    if (width == 0) width = tools::displayWidth(line);
    EXPECT_EQ(tools::displayWidth(line), width) << line;
  }
  EXPECT_EQ(count, rows + 1) << table;
}

TEST(CompanionDatabaseReading, HostileBytesAndAHotJournalAreReadAnyway) {
  TempDeviceRoot device;
  device.installDatabase();
  const std::string longName = [] {
    std::string name;
    for (int i = 0; i < 40; ++i) name += "\xC3\xA9";        // é, two bytes, one column
    for (int i = 0; i < 10; ++i) name += "\xE6\xBC\xA2";    // 漢, three bytes, two columns
    return name;
  }();
  // Another writer can store any bytes; these are what such a writer might.
  execSql(device.databaseFile(),
          "INSERT INTO Blacklist (name, phoneNumber) VALUES (CAST(X'626164FF' AS TEXT), '4917'),"
          " (X'00616200FF', '4930'), ('" + longName + "', '4940'),"
          " ('two' || char(10) || 'lines' || char(27) || '[2J', '4950');"
          "INSERT INTO History (phoneNumber, name, message, date) VALUES"
          " ('4917', 'Ann', CAST(X'68E282' AS TEXT), 1400000000.0);");
  const std::string repaired = "\xEF\xBF\xBD";
  auto readAll = [&] {
    std::string out;
    EXPECT_EQ(ctl(device.path(), {"blacklist", "list", "--json"}, &out), 0);
    nlohmann::json blacklist = nlohmann::json::parse(out);
    EXPECT_EQ(ctl(device.path(), {"history", "--json"}, &out), 0);
    nlohmann::json history = nlohmann::json::parse(out);
    EXPECT_EQ(model({"history", "--root", device.path(), "--json"}, &out), 0);
    EXPECT_EQ(nlohmann::json::parse(out), history);
    return std::make_pair(blacklist, history);
  };

  auto [blacklist, history] = readAll();
  ASSERT_EQ(blacklist.size(), 4u);
  EXPECT_EQ(blacklist[0]["name"], "bad" + repaired);
  EXPECT_EQ(blacklist[1]["name"], std::string("\0ab\0", 4) + repaired);
  EXPECT_EQ(blacklist[2]["name"], longName);
  EXPECT_EQ(blacklist[3]["name"], "two\nlines\x1B[2J");
  ASSERT_EQ(history.size(), 1u);
  EXPECT_EQ(history[0]["message"], "h" + repaired);

  // The text tables cut the long name between characters, show control
  // characters as U+FFFD, and stay aligned.
  std::string out;
  ASSERT_EQ(ctl(device.path(), {"blacklist", "list"}, &out), 0);
  expectAlignedTable(out, 4);
  EXPECT_NE(out.find("two" + repaired + "lines" + repaired + "[2J"), std::string::npos) << out;
  EXPECT_NE(out.find(tools::cutToWidth(longName, 47) + "~"), std::string::npos) << out;
  ASSERT_EQ(model({"history", "--root", device.path()}, &out), 0);
  expectAlignedTable(out, 1);
  // A picture folder another writer named with bad bytes is listed too.
  const std::string folder = device.native(kData + "/49\xFF");
  fs::create_directories(folder);
  std::ofstream(folder + "/p.png") << "png";
  ASSERT_EQ(ctl(device.path(), {"pictures", "--json"}, &out), 0);
  EXPECT_EQ(nlohmann::json::parse(out).at(0).at("path"),
            "var/mobile/Library/Preferences/Hushwall/49" + repaired + "/p.png");

  // A writer killed in the middle of a transaction that replaced the whole
  // blacklist, after its changes reached the file: the readers roll the
  // journal back and see the blacklist as it was.
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  BackgroundProcess writer([&] {
    sqlite3* db = nullptr;
    sqlite3_open(device.databaseFile().c_str(), &db);
    int rc = sqlite3_exec(db,
                          "PRAGMA cache_size = 2; BEGIN; DELETE FROM Blacklist;"
                          "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000)"
                          " INSERT INTO Blacklist (name, phoneNumber) SELECT hex(randomblob(100)), i FROM n;",
                          nullptr, nullptr, nullptr);
    ASSERT_EQ(rc, SQLITE_OK) << sqlite3_errmsg(db);
    ASSERT_EQ(::write(ready[1], "x", 1), 1);
    ::pause();
  });
  ::close(ready[1]);
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1) << "the writer failed before its transaction";
  ::close(ready[0]);
  writer.kill(SIGKILL);
  writer.wait();
  const std::string journal = device.databaseFile() + "-journal";
  ASSERT_TRUE(fs::exists(journal) && fs::file_size(journal) > 0) << "no hot journal to test with";

  auto [afterKill, historyAfterKill] = readAll();
  EXPECT_EQ(afterKill, blacklist);
  EXPECT_EQ(historyAfterKill, history);
  EXPECT_FALSE(fs::exists(journal) && fs::file_size(journal) > 0);
}

// A writer saving batches as the messenger does (the pictures, then their
// rows, each row its own commit, no busy timeout) while `history clear` runs
// again and again: no row that is stored ever names a picture that is gone.
TEST(CompanionHistoryClear, ClearingWhileBatchesAreSavedOrphansNoRow) {
  TempDeviceRoot device;
  device.installDatabase();
  PrivateBus bus(device.path());
  fs::create_directories(device.native(kData + "/4917"));
  std::ofstream(device.native(kData + "/4917/4917-1400000000.000000.png")) << "an old picture without a row";
  int done[2];
  ASSERT_EQ(::pipe(done), 0);
  BackgroundProcess writer([&] {
    sqlite3* db = nullptr;
    sqlite3_open(device.databaseFile().c_str(), &db);
    sqlite3_exec(db, "PRAGMA synchronous = OFF", nullptr, nullptr, nullptr);  // the race, not the disk
    for (int batch = 0; batch < 300; ++batch, ::usleep(2000)) {  // batches come apart
      std::vector<std::string> pictures;
      for (int i = 0; i < 10; ++i) {
        char name[64];
        std::snprintf(name, sizeof name, "/4917/4917-%f.png",
                      std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count());
        pictures.push_back(kData + name);
        fs::create_directories(device.native(kData + "/4917"));
        std::ofstream(device.native(pictures.back()) + ".tmp") << "png";
        fs::rename(device.native(pictures.back()) + ".tmp", device.native(pictures.back()));
      }
      for (const std::string& picture : pictures) {
        sqlite3_exec(db, ("INSERT INTO History (phoneNumber, mediaType, mediaFileName) VALUES ('4917', 1, '" +
                          picture + "')").c_str(), nullptr, nullptr, nullptr);
      }
    }
  });
  ::close(done[1]);
  int clears = 0, orphaned = 0, rowsSeen = 0;
  for (pollfd end{done[0], POLLIN, 0}; ::poll(&end, 1, 0) == 0; ++clears) {
    std::string err;
    EXPECT_EQ(ctl(device.path(), {"history", "clear", "--yes"}, nullptr, &err), 0) << err;
    for (const HistoryRow& row : readHistoryRows(device.databaseFile())) {
      ++rowsSeen;
      orphaned += !fs::exists(device.native(*row.mediaFileName));
    }
  }
  ::close(done[0]);
  writer.expectSuccess();
  EXPECT_GT(clears, 2);
  EXPECT_EQ(orphaned, 0) << "rows naming a deleted picture, of " << rowsSeen << " seen between clears";
  EXPECT_FALSE(fs::exists(device.native(kData + "/4917/4917-1400000000.000000.png")));
  std::printf("hushwall-figure: clear racing a writer: %d clears during 3,000 pictures and rows saved in "
              "batches of 10; %d rows seen between clears, %d naming a deleted picture\n",
              clears, rowsSeen, orphaned);
}

TEST(CompanionSettingsFile, SettersRacingEachOtherLoseNoKey) {
  TempDeviceRoot device;
  device.installDatabase();
  PrivateBus bus(device.path());
  const std::vector<std::string> keys = {"Enabled",      "SaveHistory",    "ShowStatusbarIcon", "Vibrate",
                                         "ContactsOnly", "DeleteMessages", "ActionButton",      "LockSettings"};
  const std::string file = device.native(kSettingsFilePath);
  constexpr int kRounds = 12;
  int lost = 0;
  for (int round = 0; round < kRounds; ++round) {
    // Each setter reads the file, changes its own key and renames a new file
    // into place; all of them at once.
    const std::string value = round % 2 == 0 ? "true" : "false";
    std::vector<std::unique_ptr<RunningProgram>> setters;
    for (const auto& key : keys) {
      setters.push_back(std::make_unique<RunningProgram>(
          ctlCommand(device.path(), {"settings", "set", key + "=" + value})));
    }
    for (auto& setter : setters) EXPECT_EQ(setter->finish(), 0) << setter->err;
    const host::Dict saved = linux_platform::readPlistDictionary(file).value_or(host::Dict{});
    for (const auto& key : keys) {
      auto it = saved.find(host::T(key));
      lost += it == saved.end() || it->second != host::Value::boolean(round % 2 == 0);
    }
  }
  EXPECT_EQ(lost, 0) << "keys that kept an old value, of " << kRounds * keys.size();
  std::printf("hushwall-figure: settings setters: %zu at once, %d rounds: %d of %zu keys lost\n", keys.size(),
              kRounds, lost, kRounds * keys.size());
  EXPECT_TRUE(fs::exists(file + ".lock"));
}

// A decoy outside the device, named by links planted inside it: no command
// may read, write or remove anything there, and each says why it stopped.
TEST(CompanionDeviceRoot, LinksOutOfTheRootAndWithinItAreRefused) {
  TempDeviceRoot device, decoy;
  device.installDatabase();
  tools::markDeviceRoot(device.path());
  PrivateBus bus(device.path());
  execSql(device.databaseFile(), "INSERT INTO History (phoneNumber, mediaType, mediaFileName) VALUES "
                                 "('4917', 1, '" + kData + "/4917/4917-1.png')");
  fs::create_directories(decoy.native("/4917"));
  fs::create_directories(decoy.native("/Preferences"));
  std::ofstream(decoy.native("/4917/4917-1.png")) << "picture";
  std::ofstream(decoy.native("/file")) << "not the device's";
  fs::copy_file(device.databaseFile(), decoy.native("/HSWL.db"));
  linux_platform::writeBinaryPlist(decoy.native("/settings.plist"), {{host::T("Decoy"), host::Value::boolean(true)}});
  const auto before = treeSnapshot(decoy.path());

  struct Case {
    std::string link, target;  // a device path, and a native path or a relative one
    std::vector<std::vector<std::string>> commands;
    int status;  // of each command
  };
  const std::string refused = "links are not followed inside a device root";
  const Case cases[] = {
      {kData + "/4917", decoy.native("/4917"), {{"history", "delete", "1", "--yes"}, {"history", "clear", "--yes"}}, 0},
      {kData + "/HSWL.db", decoy.native("/HSWL.db"), {{"blacklist", "add", "4930"}, {"history"}, {"blacklist", "list"}}, 1},
      {kData + "/HSWL.db", "HSWL.db.aside", {{"blacklist", "list"}}, 1},  // a link within the root
      {kSettingsFilePath, decoy.native("/settings.plist"),
       {{"settings", "show"}, {"settings", "set", "Enabled=1"}, {"settings", "replace", "Enabled=1"}}, 1},
      {std::string(kSettingsFilePath) + ".lock", decoy.native("/file"), {{"settings", "set", "Enabled=1"}}, 1},
      {"/var/mobile/Library/Preferences", decoy.native("/Preferences"),
       {{"settings", "show"}, {"settings", "set", "Enabled=1"}, {"blacklist", "add", "4930"}}, 1},
      {"/var/run/hushwall/bus.sock", decoy.native("/file"), {{"post", "com.Corvanta.HushwallSettings.x"}}, 1},
  };
  for (const Case& c : cases) {
    fs::create_directories(fs::path(device.native(c.link)).parent_path());
    const std::string aside = device.native(c.link) + ".aside";
    if (fs::exists(device.native(c.link))) fs::rename(device.native(c.link), aside);
    fs::create_symlink(c.target, device.native(c.link));
    for (const auto& command : c.commands) {
      std::string err;
      EXPECT_EQ(ctl(device.path(), command, nullptr, &err), c.status) << c.link << " " << command[0];
      if (c.status != 0) {
        EXPECT_NE(err.find(refused), std::string::npos) << c.link << ": " << err;
      }
    }
    // The library's own reads take a refused file for a missing one; only a
    // bus it cannot reach stops it.
    EXPECT_EQ(model({"settings", "--root", device.path()}), c.link.find("bus") != std::string::npos ? 1 : 0);
    fs::remove(device.native(c.link));
    if (fs::exists(aside)) fs::rename(aside, device.native(c.link));
  }
  // Programs that lay out a device write nothing through a link either.
  TempDeviceRoot fresh;
  fs::create_directories(fresh.native(kData));
  fs::create_symlink(decoy.native("/file"), fresh.native(tools::kDeviceRootMarker));
  std::string err;
  EXPECT_EQ(model({"init", "--root", fresh.path()}, nullptr, &err), 1);
  EXPECT_NE(err.find(refused), std::string::npos) << err;
  fs::remove(fresh.native(tools::kDeviceRootMarker));
  fs::create_directories(fresh.native("/var/run"));
  fs::create_symlink(decoy.native("/Preferences"), fresh.native("/var/run/hushwall"));
  EXPECT_EQ(model({"init", "--root", fresh.path()}), 0);
  EXPECT_EQ(model({"settings", "--root", fresh.path()}, nullptr, &err), 1);
  EXPECT_NE(err.find(refused), std::string::npos) << err;
  EXPECT_EQ(treeSnapshot(decoy.path()), before);
}

// A FIFO or a folder where a file is read: a clear error from the
// companion, never a wait for a writer that does not come.
TEST(CompanionDeviceRoot, FilesOfTheWrongKindAreRefusedWithoutWaiting) {
  TempDeviceRoot device;
  device.installDatabase();
  tools::markDeviceRoot(device.path());
  PrivateBus bus(device.path());
  const std::string settings = device.native(kSettingsFilePath);
  fs::create_directories(fs::path(settings).parent_path());
  const std::tuple<std::string, bool, std::string> cases[] = {  // where, a FIFO or a folder, the refusal
      {settings, true, "is a FIFO, not a regular file"},
      {settings, false, "is a directory, not a regular file"},
      {settings + ".lock", true, "is not a regular file"},
  };
  for (const auto& [file, fifo, kind] : cases) {
    fs::remove(file);  // the lock file a setter left
    if (fifo) ASSERT_EQ(::mkfifo(file.c_str(), 0644), 0);
    else fs::create_directory(file);
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"settings", "show"}, {"settings", "set", "Enabled=1"}}) {
      if (file != settings && command[1] == "show") continue;
      std::string err;
      EXPECT_EQ(ctl(device.path(), command, nullptr, &err), 1) << kind;
      EXPECT_NE(err.find(kind), std::string::npos) << err;
    }
    // The library's own read takes it for no file.
    std::string out;
    EXPECT_EQ(model({"settings", "--root", device.path()}, &out), 0);
    EXPECT_NE(out.find("Enabled=0"), std::string::npos) << out;
    fs::remove(file);
  }
}

}  // namespace
}  // namespace hushwall::testing
