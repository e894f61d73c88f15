#include "startup/settings.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/linux/plist_file.h"
#include "testing/fake_env.h"
#include "testing/process_state.h"

namespace hushwall {
namespace {

using host::T;
using host::Value;

struct Flags {
  bool enabled, saveHistory, showStatusBarIcon, vibrate, contactsOnly, deleteMessages, actionButton;
  static Flags now() {
    return {settings_Enabled,      settings_SaveHistory,    settings_ShowStatusBarIcon, settings_Vibrate,
            settings_ContactsOnly, settings_DeleteMessages, settings_ActionButton};
  }
  bool operator==(const Flags& o) const {
    return enabled == o.enabled && saveHistory == o.saveHistory &&
           showStatusBarIcon == o.showStatusBarIcon && vibrate == o.vibrate &&
           contactsOnly == o.contactsOnly && deleteMessages == o.deleteMessages &&
           actionButton == o.actionButton;
  }
};

const Flags kDefaults{false, true, false, false, false, true, false};

class SettingsTest : public ::testing::Test {
 protected:
  std::string settingsFile() const { return env.root.native(kSettingsFilePath); }

  void writeXml(const std::string& body) {
    std::filesystem::create_directories(std::filesystem::path(settingsFile()).parent_path());
    std::ofstream(settingsFile())
        << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">"
        << body << "</plist>\n";
  }

  void writeBinary(host::Dict dict) {
    std::filesystem::create_directories(std::filesystem::path(settingsFile()).parent_path());
    linux_platform::writeBinaryPlist(settingsFile(), dict);
  }

  testing::FakeEnv env;
  testing::FreshProcessState state;
};

TEST_F(SettingsTest, NoFileKeepsTheUnevenDefaultsAndAnEmptyDictionary) {
  SettingsChanged();
  EXPECT_TRUE(Flags::now() == kDefaults);
  ASSERT_NE(settingsDictionary, nullptr);
  EXPECT_TRUE(settingsDictionary->empty());
}

TEST_F(SettingsTest, MissingKeysKeepTheirPreviousValue) {
  writeXml("<dict><key>Enabled</key><true/></dict>");
  SettingsChanged();
  Flags expected = kDefaults;
  expected.enabled = true;
  EXPECT_TRUE(Flags::now() == expected);

  writeXml("<dict><key>Vibrate</key><true/><key>SaveHistory</key><false/></dict>");
  SettingsChanged();
  expected.vibrate = true;
  expected.saveHistory = false;
  EXPECT_TRUE(Flags::now() == expected);

  // Rewritten without Vibrate: the flag stays where the last file put it.
  writeXml("<dict><key>Enabled</key><false/></dict>");
  SettingsChanged();
  expected.enabled = false;
  EXPECT_TRUE(Flags::now() == expected);
  EXPECT_EQ(settingsDictionary->size(), 1u);
}

TEST_F(SettingsTest, EveryKeyFeedsItsOwnFlagAndTheStatusBarKeyHasASmallB) {
  writeBinary({{T("Enabled"), Value::boolean(true)},
               {T("SaveHistory"), Value::boolean(false)},
               {T("ShowStatusbarIcon"), Value::boolean(true)},
               {T("Vibrate"), Value::boolean(true)},
               {T("ContactsOnly"), Value::boolean(true)},
               {T("DeleteMessages"), Value::boolean(false)},
               {T("ActionButton"), Value::boolean(true)},
               {T("ShowStatusBarIcon"), Value::boolean(false)}});  // not a key we read
  SettingsChanged();
  EXPECT_TRUE(Flags::now() == (Flags{true, false, true, true, true, false, true}));
  EXPECT_EQ(settingsDictionary->size(), 8u);
}

TEST_F(SettingsTest, LockSettingsChangesNothing) {
  for (const char* value : {"<true/>", "<false/>"}) {
    writeXml(std::string("<dict><key>LockSettings</key>") + value + "</dict>");
    SettingsChanged();
    EXPECT_TRUE(Flags::now() == kDefaults) << value;
  }
}

TEST_F(SettingsTest, ValuesAreReadWithThePlatformsBoolValue) {
  writeXml(
      "<dict>"
      "<key>Enabled</key><string> +007</string>"
      "<key>SaveHistory</key><string>NO</string>"
      "<key>Vibrate</key><integer>2</integer>"
      "<key>DeleteMessages</key><real>0.0</real>"
      "<key>ActionButton</key><string>yes</string>"
      "<key>ContactsOnly</key><array><true/></array>"
      "</dict>");
  SettingsChanged();
  EXPECT_TRUE(settings_Enabled);
  EXPECT_FALSE(settings_SaveHistory);
  EXPECT_TRUE(settings_Vibrate);
  EXPECT_FALSE(settings_DeleteMessages);
  EXPECT_TRUE(settings_ActionButton);
  EXPECT_FALSE(settings_ContactsOnly);  // a container has no boolean meaning
}

TEST_F(SettingsTest, UnreadableFilesLeaveEveryFlagAsItWas) {
  writeXml("<dict><key>Enabled</key><true/><key>SaveHistory</key><false/></dict>");
  SettingsChanged();
  const Flags loaded = Flags::now();

  writeXml("<array><dict><key>Enabled</key><false/></dict></array>");
  SettingsChanged();
  EXPECT_TRUE(Flags::now() == loaded);
  EXPECT_TRUE(settingsDictionary->empty());

  std::ofstream(settingsFile(), std::ios::trunc) << "bplist00\x01garbage";
  SettingsChanged();
  EXPECT_TRUE(Flags::now() == loaded);
  EXPECT_TRUE(settingsDictionary->empty());

  std::filesystem::remove(settingsFile());
  SettingsChanged();
  EXPECT_TRUE(Flags::now() == loaded);
}

TEST_F(SettingsTest, RepeatedReloadsGiveTheSameResult) {
  writeXml("<dict><key>Enabled</key><true/><key>Vibrate</key><true/></dict>");
  SettingsChanged();
  const Flags first = Flags::now();
  const host::Dict firstDictionary = *settingsDictionary;
  SettingsChanged();
  EXPECT_TRUE(Flags::now() == first);
  EXPECT_EQ(*settingsDictionary, firstDictionary);
}

}  // namespace
}  // namespace hushwall
