// The settings file damaged or of the wrong shape. A file that cannot be read
// as a dictionary counts as no file: every flag keeps its value and the
// settings dictionary is empty. Values of the wrong type are read with the
// platform's boolValue as they stand. After each, a sound file is read as
// usual.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>
#include <string>

#include "platform/linux/plist_file.h"
#include "startup/settings.h"
#include "testing/child_process.h"
#include "testing/fake_env.h"
#include "testing/process_state.h"

namespace hushwall {
namespace {

namespace fs = std::filesystem;
using host::T;
using host::Value;

// Every flag, in key order, so that one comparison covers them all.
std::vector<bool> flags() {
  return {settings_Enabled,      settings_SaveHistory,    settings_ShowStatusBarIcon, settings_Vibrate,
          settings_ContactsOnly, settings_DeleteMessages, settings_ActionButton};
}

// A file that sets every flag against its default, so that a reload that
// wrongly read anything from a damaged file shows.
const host::Dict kGoodSettings = {
    {T("Enabled"), Value::boolean(true)},       {T("SaveHistory"), Value::boolean(false)},
    {T("ShowStatusbarIcon"), Value::boolean(true)}, {T("Vibrate"), Value::boolean(true)},
    {T("ContactsOnly"), Value::boolean(true)},  {T("DeleteMessages"), Value::boolean(false)},
    {T("ActionButton"), Value::boolean(true)},
};
const std::vector<bool> kGoodFlags = {true, false, true, true, true, false, true};
const std::vector<bool> kDefaultFlags = {false, true, false, false, false, true, false};

constexpr char kKeyWithNul[] = "<plist><dict><key>En\0abled</key><true/></dict></plist>";

std::string contentsOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class HostileSettingsTest : public ::testing::Test {
 protected:
  std::string file() const { return env.root.native(kSettingsFilePath); }
  void replaceWith(const std::string& bytes) {
    fs::remove_all(file());
    std::ofstream(file(), std::ios::binary) << bytes;
  }
  // A reload of a file that is as good as missing.
  void expectIgnored(const std::string& what) {
    const std::vector<bool> before = flags();
    SettingsChanged();
    EXPECT_EQ(flags(), before) << what;
    ASSERT_NE(settingsDictionary, nullptr) << what;
    EXPECT_TRUE(settingsDictionary->empty()) << what;
  }
  // A sound file is read again after whatever came before it.
  void expectSoundAgain(const std::string& after) {
    fs::remove_all(file());
    linux_platform::writeBinaryPlist(file(), kGoodSettings);
    SettingsChanged();
    EXPECT_EQ(flags(), kGoodFlags) << "after " << after;
    settings_Enabled = false, settings_SaveHistory = true, settings_ShowStatusBarIcon = false;
    settings_Vibrate = false, settings_ContactsOnly = false, settings_DeleteMessages = true;
    settings_ActionButton = false;
  }

  void SetUp() override { fs::create_directories(fs::path(file()).parent_path()); }

  testing::FakeEnv env;
  testing::FreshProcessState state;
};

TEST_F(HostileSettingsTest, UnreadableFilesCountAsNoFile) {
  std::mt19937 random(11);
  auto noise = [&](std::size_t size, const std::string& head) {
    std::string bytes = head;
    while (bytes.size() < size) bytes += static_cast<char>(random());
    return bytes;
  };
  const std::vector<std::pair<std::string, std::function<void()>>> faults = {
      {"an empty file", [&] { replaceWith(""); }},
      {"random bytes", [&] { replaceWith(noise(4096, "")); }},
      {"random bytes behind a binary header", [&] { replaceWith(noise(4096, "bplist00")); }},
      {"random bytes behind an XML header", [&] { replaceWith(noise(4096, "<?xml ")); }},
      {"an array root",
       [&] { replaceWith("<plist><array><dict><key>Enabled</key><true/></dict></array></plist>"); }},
      {"a string root", [&] { replaceWith("<plist><string>Enabled</string></plist>"); }},
      {"an XML dictionary with a NUL in a key",
       [&] { replaceWith(std::string(kKeyWithNul, sizeof kKeyWithNul - 1)); }},
      {"a directory in its place",
       [&] {
         fs::remove_all(file());
         fs::create_directory(file());
       }},
  };
  for (const auto& [fault, damage] : faults) {
    damage();
    expectIgnored(fault);
    expectSoundAgain(fault);
  }

  // Cut off anywhere, a property list is either still whole enough to read
  // in full or not read at all: never half a set of flags.
  int prefixes = 0;
  for (bool binary : {true, false}) {
    if (binary) linux_platform::writeBinaryPlist(file(), kGoodSettings);
    else linux_platform::writeXmlPlist(file(), kGoodSettings);
    const std::string whole = contentsOf(file());
    for (std::size_t length = 0; length < whole.size(); ++length, ++prefixes) {
      replaceWith(whole.substr(0, length));
      SettingsChanged();
      ASSERT_NE(settingsDictionary, nullptr);
      if (settingsDictionary->empty()) {
        EXPECT_EQ(flags(), kDefaultFlags) << (binary ? "binary" : "XML") << " cut at " << length;
      } else {
        EXPECT_EQ(*settingsDictionary, kGoodSettings) << (binary ? "binary" : "XML")
                                                      << " cut at " << length;
        EXPECT_EQ(flags(), kGoodFlags);
        expectSoundAgain("a cut file");  // back to the defaults
      }
    }
  }
  std::printf("hushwall-figure: hostile settings: %zu damaged files and %d cut-off files survived\n",
              faults.size(), prefixes);
}

TEST_F(HostileSettingsTest, AFileTheProcessMayNotReadCountsAsNoFile) {
  linux_platform::writeBinaryPlist(file(), kGoodSettings);
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

TEST_F(HostileSettingsTest, ValuesOfAnyTypeAreReadWithoutATypeCheck) {
  // Start from every flag against its default, so that each value below
  // visibly moves its flag.
  linux_platform::writeBinaryPlist(file(), kGoodSettings);
  SettingsChanged();
  ASSERT_EQ(flags(), kGoodFlags);

  linux_platform::writeBinaryPlist(
      file(), {{T("Enabled"), Value::date(1400000000.0)},
               {T("SaveHistory"), Value::integer(std::numeric_limits<std::int64_t>::min())},
               {T("ShowStatusbarIcon"), Value::data({1})},
               {T("Vibrate"), Value::dictionary({{T("Vibrate"), Value::boolean(true)}})},
               {T("ContactsOnly"), Value::string(T("0x1"))},
               {T("DeleteMessages"), Value::string(T("  Yes please"))},
               {T("ActionButton"), Value::string(T(""))}});
  SettingsChanged();
  // Dates, bytes and containers have no boolean meaning; a number is true
  // when it is not zero, however large; a string by its first character
  // after blanks, a sign and leading zeros.
  EXPECT_EQ(flags(), (std::vector<bool>{false, true, false, false, false, true, false}));
  EXPECT_EQ(settingsDictionary->size(), 7u);
  expectSoundAgain("values of other types");
}

}  // namespace
}  // namespace hushwall
