// The companion programs at their boundaries, run as real processes: hostile
// words and roots on the command line, hostile bytes and a hot journal in the
// database they read, and several writers of the settings file at once.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "host/text.h"
#include "platform/linux/device_bus_address.h"
#include "platform/linux/plist_file.h"
#include "startup/settings.h"
#include "testing/background_process.h"
#include "testing/database_rows.h"
#include "testing/private_bus.h"
#include "testing/running_program.h"
#include "testing/temp_device_root.h"
#include "tools/companion_test_programs.h"
#include "tools/device_root.h"
#include "tools/display_width.h"

namespace hushwall::testing {
namespace {

namespace fs = std::filesystem;

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

  // Directories that are not a device, the machine's own root among them:
  // refused, and nothing is written there, not even a bus socket.
  TempDeviceRoot empty;
  const bool machineHadVarMobile = fs::exists("/var/mobile");
  for (const std::string& root : {empty.path(), std::string("/"), empty.path() + "/../" + fs::path(empty.path()).filename().string()}) {
    std::string err;
    EXPECT_EQ(ctl(root, {"settings", "set", "Enabled=1"}, nullptr, &err), 2) << root;
    EXPECT_EQ(ctl(root, {"blacklist", "add", "4917"}, nullptr, &err), 2) << root;
    EXPECT_NE(err.find(root == "/" ? "the machine's own root" : "is not a device root"), std::string::npos) << err;
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

  // A root too long for its bus socket: a change that could not be announced
  // is refused, not made and then reported as refused.
  const std::string longRoot = empty.path() + "/" + std::string(100 - empty.path().size() - 1, 'r');
  fs::create_directories(longRoot);
  tools::markDeviceRoot(longRoot);
  fs::create_directories(longRoot + "/var/mobile/Library/Preferences/Hushwall");
  fs::copy_file(device.databaseFile(), longRoot + "/var/mobile/Library/Preferences/Hushwall/HSWL.db");
  bool addressFits = true;
  try {
    (void)linux_platform::deviceBusSocketPath(longRoot);
  } catch (const std::invalid_argument&) {
    addressFits = false;
  }
  const int expected = addressFits ? 0 : 2;  // no bus runs there
  EXPECT_EQ(ctl(longRoot, {"settings", "set", "Enabled=1"}), expected);
  EXPECT_EQ(ctl(longRoot, {"blacklist", "add", "4930"}), expected);
  EXPECT_EQ(fs::exists(longRoot + kSettingsFilePath), addressFits);
  EXPECT_EQ(readHistoryRows(longRoot + "/var/mobile/Library/Preferences/Hushwall/HSWL.db").size(), 0u);
  std::string out;
  ASSERT_EQ(ctl(longRoot, {"blacklist", "list", "--json"}, &out), 0);
  EXPECT_EQ(nlohmann::json::parse(out).size(), addressFits ? 2u : 1u);
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
  const std::string folder = device.native("/var/mobile/Library/Preferences/Hushwall/49\xFF");
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
  const std::string data = "/var/mobile/Library/Preferences/Hushwall";
  fs::create_directories(device.native(data + "/4917"));
  std::ofstream(device.native(data + "/4917/4917-1400000000.000000.png")) << "an old picture without a row";
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
        pictures.push_back(data + name);
        fs::create_directories(device.native(data + "/4917"));
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
  EXPECT_FALSE(fs::exists(device.native(data + "/4917/4917-1400000000.000000.png")));
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
          std::vector<std::string>{HUSHWALLCTL_PATH, "--root", device.path(), "settings", "set", key + "=" + value}));
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


// Every file under `directory` with its bytes (a folder as "/", a link as
// "-> target"), to tell that nothing there changed.
std::map<std::string, std::string> snapshot(const std::string& directory) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    files[entry.path()] = entry.is_symlink()     ? "-> " + fs::read_symlink(entry.path()).string()
                          : entry.is_directory() ? "/"
                                                 : fileBytes(entry.path());
  }
  return files;
}

// A decoy outside the device, named by links planted inside it: no command
// may read, write or remove anything there, and each says why it stopped.
TEST(CompanionDeviceRoot, LinksOutOfTheRootAndWithinItAreRefused) {
  TempDeviceRoot device, decoy;
  device.installDatabase();
  tools::markDeviceRoot(device.path());
  PrivateBus bus(device.path());
  const std::string data = "/var/mobile/Library/Preferences/Hushwall";
  execSql(device.databaseFile(), "INSERT INTO History (phoneNumber, mediaType, mediaFileName) VALUES "
                                 "('4917', 1, '" + data + "/4917/4917-1.png')");
  fs::create_directories(decoy.native("/4917"));
  fs::create_directories(decoy.native("/Preferences"));
  std::ofstream(decoy.native("/4917/4917-1.png")) << "picture";
  std::ofstream(decoy.native("/file")) << "not the device's";
  fs::copy_file(device.databaseFile(), decoy.native("/HSWL.db"));
  linux_platform::writeBinaryPlist(decoy.native("/settings.plist"), {{host::T("Decoy"), host::Value::boolean(true)}});
  const auto before = snapshot(decoy.path());

  struct Case {
    std::string link, target;  // a device path, and a native path or a relative one
    std::vector<std::vector<std::string>> commands;
    int status;  // of each command
  };
  const std::string refused = "links are not followed inside a device root";
  const Case cases[] = {
      {data + "/4917", decoy.native("/4917"), {{"history", "delete", "1", "--yes"}, {"history", "clear", "--yes"}}, 0},
      {data + "/HSWL.db", decoy.native("/HSWL.db"), {{"blacklist", "add", "4930"}, {"history"}, {"blacklist", "list"}}, 1},
      {data + "/HSWL.db", "HSWL.db.aside", {{"blacklist", "list"}}, 1},  // a link within the root
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
  fs::create_directories(fresh.native(data));
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
  EXPECT_EQ(snapshot(decoy.path()), before);
}

// A FIFO, a folder or a socket where a file is read: a clear error from the
// companion, never a wait for a writer that does not come.
TEST(CompanionDeviceRoot, FilesOfTheWrongKindAreRefusedWithoutWaiting) {
  TempDeviceRoot device;
  device.installDatabase();
  tools::markDeviceRoot(device.path());
  PrivateBus bus(device.path());
  const std::string settings = device.native(kSettingsFilePath);
  fs::create_directories(fs::path(settings).parent_path());
  struct Case {
    std::string file;
    void (*make)(const std::string&);
    std::string kind;
  };
  auto fifo = [](const std::string& path) { ASSERT_EQ(::mkfifo(path.c_str(), 0644), 0); };
  auto folder = [](const std::string& path) { fs::create_directory(path); };
  const Case cases[] = {
      {settings, fifo, "is a FIFO, not a regular file"},
      {settings, folder, "is a directory, not a regular file"},
      {settings + ".lock", fifo, "is not a regular file"},
  };
  for (const Case& c : cases) {
    fs::remove(c.file);  // the lock file a setter left
    c.make(c.file);
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"settings", "show"}, {"settings", "set", "Enabled=1"}}) {
      if (c.file != settings && command[1] == "show") continue;
      std::string err;
      EXPECT_EQ(ctl(device.path(), command, nullptr, &err), 1) << c.kind;
      EXPECT_NE(err.find(c.kind), std::string::npos) << err;
    }
    // The library's own read takes it for no file.
    std::string out;
    EXPECT_EQ(model({"settings", "--root", device.path()}, &out), 0);
    EXPECT_NE(out.find("Enabled=0"), std::string::npos) << out;
    fs::remove(c.file);
  }
}

}  // namespace
}  // namespace hushwall::testing
