// Reading the settings file into the flags: each key feeds its own flag with
// the platform's boolValue, a key the file lacks keeps its flag as it was,
// and a file that cannot be read as a dictionary counts as no file (every
// flag kept, the settings dictionary empty).
#include "startup/settings.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "platform/linux/plist_file.h"
#include "testing/child_process.h"
#include "testing/fake_env.h"
#include "testing/process_state.h"

namespace hushwall {
namespace {

namespace fs = std::filesystem;
using host::T;
using host::Value;
using Flags = std::vector<bool>;

// Every flag, in key order, so that one comparison covers them all.
Flags flags() {
  return {settings_Enabled,      settings_SaveHistory,    settings_ShowStatusBarIcon, settings_Vibrate,
          settings_ContactsOnly, settings_DeleteMessages, settings_ActionButton};
}
const Flags kDefaults = {false, true, false, false, false, true, false};

// Every flag against its default, so that a reload that wrongly read
// anything, or skipped a key, shows.
const host::Dict kFlippedFile = {
    {T("Enabled"), Value::boolean(true)},           {T("SaveHistory"), Value::boolean(false)},
    {T("ShowStatusbarIcon"), Value::boolean(true)}, {T("Vibrate"), Value::boolean(true)},
    {T("ContactsOnly"), Value::boolean(true)},      {T("DeleteMessages"), Value::boolean(false)},
    {T("ActionButton"), Value::boolean(true)},
};
const Flags kFlipped = {true, false, true, true, true, false, true};

class SettingsTest : public ::testing::Test {
 protected:
  void SetUp() override { fs::create_directories(fs::path(file()).parent_path()); }
  std::string file() const { return env.root.native(kSettingsFilePath); }
  void write(const host::Dict& dict) {
    fs::remove_all(file());
    linux_platform::writeBinaryPlist(file(), dict);
  }
  void writeBytes(const std::string& bytes) {
    fs::remove_all(file());
    std::ofstream(file(), std::ios::binary) << bytes;
  }
  Flags reload() {
    SettingsChanged();
    return flags();
  }
  // A reload of a file that is as good as missing.
  void expectIgnored(const std::string& what) {
    const Flags before = flags();
    EXPECT_EQ(reload(), before) << what;
    ASSERT_NE(settingsDictionary, nullptr) << what;
    EXPECT_TRUE(settingsDictionary->empty()) << what;
  }

  testing::FakeEnv env;
  testing::FreshProcessState state;
};

TEST_F(SettingsTest, EveryKeyFeedsItsOwnFlagAndMissingKeysKeepTheirValue) {
  expectIgnored("no file");
  EXPECT_EQ(flags(), kDefaults);

  // The status-bar key has a small b; LockSettings belongs to the settings
  // pane and feeds no flag.
  host::Dict every = kFlippedFile;
  every[T("ShowStatusBarIcon")] = Value::boolean(false);
  every[T("LockSettings")] = Value::boolean(true);
  write(every);
  EXPECT_EQ(reload(), kFlipped);
  EXPECT_EQ(*settingsDictionary, every);
  EXPECT_EQ(reload(), kFlipped);  // reloading the same file changes nothing
  EXPECT_EQ(*settingsDictionary, every);

  // Rewritten with two keys: the others stay where the last file put them.
  write({{T("Enabled"), Value::boolean(false)}, {T("Vibrate"), Value::boolean(false)}});
  EXPECT_EQ(reload(), (Flags{false, false, true, false, true, false, true}));
  EXPECT_EQ(settingsDictionary->size(), 2u);
  for (bool lock : {true, false}) {
    write({{T("LockSettings"), Value::boolean(lock)}});
    EXPECT_EQ(reload(), (Flags{false, false, true, false, true, false, true})) << lock;
  }
  fs::remove(file());
  expectIgnored("the file removed");  // every flag as the last file left it
}

TEST_F(SettingsTest, ValuesOfAnyTypeAreReadWithThePlatformsBoolValue) {
  const std::map<std::string, bool*> flag = {
      {"Enabled", &settings_Enabled},         {"SaveHistory", &settings_SaveHistory},
      {"ShowStatusbarIcon", &settings_ShowStatusBarIcon}, {"Vibrate", &settings_Vibrate},
      {"ContactsOnly", &settings_ContactsOnly}, {"DeleteMessages", &settings_DeleteMessages},
      {"ActionButton", &settings_ActionButton}};
  // A number is true when it is not zero, however large; a string by its
  // first character after blanks, a sign and leading zeros; dates, bytes and
  // containers have no boolean meaning. (The plainest of each are the value
  // type's own test; here, that the settings take any type as it stands.)
  const std::vector<std::tuple<std::string, Value, bool>> cases = {
      {"Enabled", Value::string(T(" +007")), true},
      {"Enabled", Value::date(1400000000.0), false},
      {"SaveHistory", Value::string(T("NO")), false},
      {"SaveHistory", Value::integer(std::numeric_limits<std::int64_t>::min()), true},
      {"Vibrate", Value::dictionary({{T("Vibrate"), Value::boolean(true)}}), false},
      {"DeleteMessages", Value::string(T("  Yes please")), true},
      {"ActionButton", Value::string(T("yes")), true},
      {"ActionButton", Value::string(T("")), false},
      {"ContactsOnly", Value::string(T("0x1")), false},
      {"ShowStatusbarIcon", Value::data({1}), false},
  };
  for (const auto& [key, value, expected] : cases) {
    *flag.at(key) = !expected;  // so that the value visibly moves its flag
    write({{T(key), value}});
    SettingsChanged();
    EXPECT_EQ(*flag.at(key), expected) << key << " should read as " << expected;
  }
}

TEST_F(SettingsTest, DamagedFilesCountAsNoFileAndASoundOneIsReadAfter) {
  std::mt19937 random(11);
  auto noise = [&](std::string bytes) {
    while (bytes.size() < 4096) bytes += static_cast<char>(random());
    return bytes;
  };
  constexpr char kKeyWithNul[] = "<plist><dict><key>En\0abled</key><true/></dict></plist>";
  const std::vector<std::pair<std::string, std::function<void()>>> faults = {
      {"an empty file", [&] { writeBytes(""); }},
      {"random bytes", [&] { writeBytes(noise("")); }},
      {"random bytes behind a binary header", [&] { writeBytes(noise("bplist00")); }},
      {"random bytes behind an XML header", [&] { writeBytes(noise("<?xml ")); }},
      {"an array root",
       [&] { writeBytes("<plist><array><dict><key>Enabled</key><true/></dict></array></plist>"); }},
      {"a string root", [&] { writeBytes("<plist><string>Enabled</string></plist>"); }},
      {"a NUL in a key", [&] { writeBytes(std::string(kKeyWithNul, sizeof kKeyWithNul - 1)); }},
      {"a directory in its place", [&] { fs::remove_all(file()), fs::create_directory(file()); }},
  };
  for (const auto& [fault, damage] : faults) {
    write(kFlippedFile);
    ASSERT_EQ(reload(), kFlipped);
    damage();
    expectIgnored(fault);
    write({{T("Enabled"), Value::boolean(false)}});
    EXPECT_FALSE(reload()[0]) << "a sound file after " << fault;
  }

  // Cut off anywhere, a file is either still whole enough to read in full or
  // not read at all: never half a set of flags.
  int prefixes = 0;
  for (bool binary : {true, false}) {
    if (binary) linux_platform::writeBinaryPlist(file(), kFlippedFile);
    else linux_platform::writeXmlPlist(file(), kFlippedFile);
    std::ifstream in(file(), std::ios::binary);
    const std::string whole(std::istreambuf_iterator<char>(in), {});
    for (std::size_t length = 0; length < whole.size(); ++length, ++prefixes) {
      testing::FreshProcessState defaults;
      writeBytes(whole.substr(0, length));
      SettingsChanged();
      const bool read = !settingsDictionary->empty();
      EXPECT_EQ(flags(), read ? kFlipped : kDefaults) << (binary ? "binary" : "XML") << " cut at " << length;
      if (read) {
        EXPECT_EQ(*settingsDictionary, kFlippedFile) << length;
      }
    }
  }
  std::printf("hushwall-figure: hostile settings: %zu damaged files and %d cut-off files survived\n",
              faults.size(), prefixes);
}

TEST_F(SettingsTest, AFileTheProcessMayNotReadCountsAsNoFile) {
  write(kFlippedFile);
  fs::permissions(env.root.path(), fs::perms::owner_all | fs::perms::others_exec);
  fs::permissions(file(), fs::perms::owner_read | fs::perms::owner_write);
  testing::runInChildProcess([&] {
    if (::geteuid() == 0) {
      ASSERT_EQ(::setgid(65534), 0);
      ASSERT_EQ(::setuid(65534), 0);
    }
    expectIgnored("unreadable");
  });
}

}  // namespace
}  // namespace hushwall
