// The phone's package as Theos would lay it out, checked without Theos or
// an iOS SDK: its four property lists (each parsed by a test below), the
// Substrate filter, the control file, the
// settings switches against the library's own defaults, the template
// database against the simulator's, and the tweak's sources against what
// the Linux build of the adapter links. (The firmware range is held to the
// hook table by objchost/springboard_firmware_test.mm.)
#include <plist/plist.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "startup/settings.h"
#include "testing/file_tree.h"
#include "testing/running_program.h"
#include "testing/temp_device_root.h"

namespace hushwall {
namespace {

namespace fs = std::filesystem;

const fs::path kDevice = HUSHWALL_DEVICE_DIR;

using Plist = std::unique_ptr<void, decltype(&plist_free)>;

Plist parse(const fs::path& path) {
  const std::string bytes = testing::fileBytes(path);
  plist_t root = nullptr;
  if (!bytes.empty()) plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
  return Plist(root, &plist_free);
}

plist_t child(plist_t dict, const char* key) {
  if (dict == nullptr || plist_get_node_type(dict) != PLIST_DICT) return nullptr;
  return plist_dict_get_item(dict, key);
}

std::string stringOf(plist_t node) {
  if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return "(not a string)";
  return plist_get_string_ptr(node, nullptr);
}

// Runs a shell command; its standard output, or a failure.
std::string run(const std::string& command) {
  std::string output, errors;
  EXPECT_EQ(testing::runProgram({"/bin/sh", "-c", command}, &output, &errors), 0) << command << "\n" << errors;
  return output;
}

TEST(PackageLayout, FilterNamesExactlyTheMessengerAndSpringBoard) {
  Plist filter = parse(kDevice / "Hushwall.plist");
  // Only Filter, holding only Bundles: any other key (Executables, Classes,
  // Mode) would change whom it loads into.
  plist_t inner = child(filter.get(), "Filter");
  plist_t bundles = child(inner, "Bundles");
  ASSERT_NE(bundles, nullptr);
  EXPECT_EQ(plist_dict_get_size(filter.get()), 1u);
  EXPECT_EQ(plist_dict_get_size(inner), 1u);
  ASSERT_EQ(plist_get_node_type(bundles), PLIST_ARRAY);
  std::multiset<std::string> names;
  for (uint32_t i = 0; i < plist_array_get_size(bundles); ++i) {
    names.insert(stringOf(plist_array_get_item(bundles, i)));
  }
  EXPECT_EQ(names, (std::multiset<std::string>{"com.apple.springboard", "net.whatsapp.WhatsApp"}));
}

// A control file's fields; a failure for what is not one field per line.
std::map<std::string, std::string> controlFields(const std::string& text) {
  EXPECT_EQ(text.empty() ? '\0' : text.back(), '\n');
  std::map<std::string, std::string> fields;
  std::istringstream lines(text);
  const std::regex field(R"(([A-Za-z][A-Za-z0-9-]*): (\S.*))");
  for (std::string line; std::getline(lines, line);) {
    std::smatch m;
    // One field per line: no continuation lines, no blank lines, no CR.
    EXPECT_TRUE(std::regex_match(line, m, field)) << "not a field line: '" << line << "'";
    EXPECT_TRUE(fields.emplace(m[1], m[2]).second) << "field given twice: " << m[1];
  }
  return fields;
}

std::set<std::string> dependencyNames(const std::string& depends) {
  std::set<std::string> names;
  const std::regex name(R"((?:^|,)\s*([^\s,(]+))");
  for (std::sregex_iterator it(depends.begin(), depends.end(), name), end; it != end; ++it) names.insert((*it)[1]);
  return names;
}

TEST(PackageLayout, ControlFilesOfBothBuildsAreValidAndDifferOnlyInTheDevices) {
  // Theos packs device/control as it is (armv7 and arm64); the Linux build
  // (arm64 only) keeps 32-bit devices away.
  auto theos = controlFields(testing::fileBytes(kDevice / "control"));
  auto arm64 = controlFields(run(std::string("'") + HUSHWALL_PACKAGE_SCRIPT + "' --control"));
  for (auto* fields : {&theos, &arm64}) {
    for (const char* required : {"Package", "Name", "Version", "Architecture", "Description",
                                 "Maintainer", "Author", "Section", "Depends", "Icon"}) {
      EXPECT_EQ(fields->count(required), 1u) << required;
    }
    EXPECT_TRUE(std::regex_match((*fields)["Package"], std::regex(R"([a-z0-9][a-z0-9+.-]+)")));
    EXPECT_TRUE(std::regex_match((*fields)["Version"],
                                 std::regex(R"(([0-9]+:)?[0-9][A-Za-z0-9.+~]*(-[A-Za-z0-9.+~]+)?)")));
    for (const char* person : {"Maintainer", "Author"}) {
      EXPECT_TRUE(std::regex_match((*fields)[person], std::regex(R"([^<>]+ <[^<>@ ]+@[^<>@ ]+>)")))
          << person << " needs a name and an address: " << (*fields)[person];
    }
    // The icon Cydia shows is the Settings row's, installed by the package.
    for (auto [key, value] : {std::pair{"Architecture", "iphoneos-arm"}, {"Section", "Tweaks"},
                              {"Icon", "file:///Library/PreferenceBundles/HushwallSettings.bundle/icon.png"}}) {
      EXPECT_EQ((*fields)[key], value);
    }
  }
  const std::set<std::string> common = {"mobilesubstrate", "preferenceloader", "libstatusbar",
                                        "firmware"};
  EXPECT_EQ(dependencyNames(theos["Depends"]), common);
  std::set<std::string> arm64Only = common;
  arm64Only.insert("cy+cpu.arm64");
  EXPECT_EQ(dependencyNames(arm64["Depends"]), arm64Only);
  EXPECT_NE(theos["Description"], arm64["Description"]);
  for (const char* differs : {"Depends", "Description"}) theos.erase(differs), arm64.erase(differs);
  EXPECT_EQ(theos, arm64);
}

// The PNGs of a folder, by name, with their width and height from the
// header ({0, 0} for what is not one).
std::map<std::string, std::pair<int, int>> pngsIn(const fs::path& folder) {
  std::map<std::string, std::pair<int, int>> found;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() != ".png") continue;
    const std::string bytes = testing::fileBytes(entry.path());
    auto be32 = [&](std::size_t at) {
      int value = 0;
      for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
      return value;
    };
    const bool png = bytes.size() >= 24 && bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") == 0 &&
                     bytes.compare(12, 4, "IHDR") == 0;
    found[entry.path().filename().string()] = png ? std::make_pair(be32(16), be32(20)) : std::make_pair(0, 0);
  }
  return found;
}

TEST(PackageLayout, ImagesAndTheSettingsBundleAreFoundUnderTheNamesTheyAreLookedUpBy) {
  // The status-bar item's name that the library asks for (model/hushwall.cpp),
  // behind the prefixes libstatusbar looks it up by on iOS 7 and 8
  // (scripts/render-images.sh), 14 x 20 points; the Settings row's icon,
  // 29 x 29 points, under the name the PreferenceLoader entry gives.
  const std::string model = testing::fileBytes(kDevice / "../model/hushwall.cpp");
  ASSERT_NE(model.find("kStatusBarImageName[] = \"HSWL\""), std::string::npos);
  Plist info = parse(kDevice / "HushwallSettings/Resources/Info.plist");
  Plist entry = parse(kDevice / "layout/Library/PreferenceLoader/Preferences/HushwallSettings.plist");
  plist_t cell = child(entry.get(), "entry");
  ASSERT_EQ(stringOf(child(cell, "icon")), "icon.png");
  std::map<std::string, std::pair<int, int>> statusBar, settings;
  for (int scale = 1; scale <= 3; ++scale) {
    const std::string suffix = (scale == 1 ? "" : "@" + std::to_string(scale) + "x") + ".png";
    for (const char* look : {"Black", "LockScreen"}) {
      statusBar[std::string(look) + "_HSWL" + suffix] = {14 * scale, 20 * scale};
    }
    settings["icon" + suffix] = {29 * scale, 29 * scale};
  }
  EXPECT_EQ(pngsIn(kDevice / "layout/System/Library/Frameworks/UIKit.framework"), statusBar);
  EXPECT_EQ(pngsIn(kDevice / "HushwallSettings/Resources"), settings);
  // PreferenceLoader finds the bundle by the entry, and its principal class
  // is the one the bundle's source defines.
  EXPECT_EQ(stringOf(child(info.get(), "CFBundleIdentifier")), "com.Corvanta.HushwallSettings");
  EXPECT_EQ(stringOf(child(info.get(), "CFBundleExecutable")), "HushwallSettings");
  EXPECT_EQ(stringOf(child(cell, "bundle")), "HushwallSettings");
  const std::string principal = stringOf(child(info.get(), "NSPrincipalClass"));
  EXPECT_EQ(stringOf(child(cell, "detail")), principal);
  EXPECT_NE(testing::fileBytes(kDevice / "HushwallSettings/HushwallSettingsListController.m")
                .find("@implementation " + principal + "\n"),
            std::string::npos)
      << principal;
}

// The main page's rows. A switch shows, before the user touches it, what
// the library assumes for a key missing from the settings file. Preferences
// performs a row's `action` when the row is a button; a link row would push
// its `detail` instead (HushwallSettingsListController+Screens.mm).
TEST(PackageLayout, MainPageSwitchesHaveTheLibrarysDefaultsAndButtonsOpenTheScreens) {
  Plist root = parse(kDevice / "HushwallSettings/Resources/Root.plist");
  plist_t items = child(root.get(), "items");
  ASSERT_TRUE(items != nullptr && plist_get_node_type(items) == PLIST_ARRAY);
  std::map<std::string, bool> switches;
  std::map<std::string, std::string> actions;
  for (uint32_t i = 0; i < plist_array_get_size(items); ++i) {
    plist_t item = plist_array_get_item(items, i);
    if (child(item, "action") != nullptr) {
      EXPECT_EQ(stringOf(child(item, "cell")), "PSButtonCell") << stringOf(child(item, "label"));
      actions[stringOf(child(item, "label"))] = stringOf(child(item, "action"));
    }
    if (stringOf(child(item, "cell")) != "PSSwitchCell") continue;
    const std::string key = stringOf(child(item, "key"));
    SCOPED_TRACE(key);
    EXPECT_EQ(stringOf(child(item, "defaults")), "com.Corvanta.HushwallSettings");
    EXPECT_EQ(stringOf(child(item, "PostNotification")), "com.Corvanta.HushwallSettings.settingsChanged");
    plist_t fallback = child(item, "default");
    ASSERT_TRUE(fallback != nullptr && plist_get_node_type(fallback) == PLIST_BOOLEAN);
    uint8_t value = 0;
    plist_get_bool_val(fallback, &value);
    EXPECT_TRUE(switches.emplace(key, value != 0).second) << "two switches for one key";
  }
  EXPECT_EQ(switches, (std::map<std::string, bool>{{"Enabled", settings_Enabled},
                                                   {"SaveHistory", settings_SaveHistory},
                                                   {"ShowStatusbarIcon", settings_ShowStatusBarIcon},
                                                   {"Vibrate", settings_Vibrate},
                                                   {"ContactsOnly", settings_ContactsOnly},
                                                   {"DeleteMessages", settings_DeleteMessages},
                                                   {"ActionButton", settings_ActionButton}}));
  EXPECT_EQ(actions, (std::map<std::string, std::string>{{"Blacklist", "showBlacklist:"},
                                                         {"History", "showHistory:"}}));
}

// "type|name|tbl_name|sql" per schema object.
std::string schemaOf(const fs::path& database) {
  sqlite3* db = nullptr;
  std::string schema;
  if (sqlite3_open_v2(database.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
    sqlite3_exec(db, "SELECT type, name, tbl_name, sql FROM sqlite_master ORDER BY type, name",
                 [](void* out, int n, char** values, char**) {
                   for (int c = 0; c < n; ++c) {
                     *static_cast<std::string*>(out) += std::string(values[c] ? values[c] : "NULL") + (c + 1 < n ? "|" : "\n");
                   }
                   return 0;
                 },
                 &schema, nullptr);
  }
  sqlite3_close(db);
  return schema;
}

TEST(PackageLayout, TemplateDatabaseHasTheSimulatorsSchema) {
  testing::TempDeviceRoot temp;
  const fs::path made = fs::path(temp.path()) / "bundle" / "HSWL.db";
  // The very rule the settings bundle's Makefile stages the template with.
  run(std::string(HUSHWALL_MAKE) + " -s -f '" +
      (kDevice / "HushwallSettings/template_db.mk").string() + "' '" + made.string() + "'");
  ASSERT_TRUE(fs::exists(made));
  const std::string schema = schemaOf(made);
  EXPECT_NE(schema.find("table|Blacklist|Blacklist|"), std::string::npos) << schema;
  EXPECT_NE(schema.find("table|History|History|"), std::string::npos) << schema;
  EXPECT_EQ(schema, schemaOf(HUSHWALL_TEMPLATE_DB));
}

// The files of a list (one a line, or split at `delimiter`), as canonical paths.
std::vector<std::string> files(const std::string& text, char delimiter = '\n') {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line, delimiter);) {
    if (!line.empty()) out.push_back(fs::weakly_canonical(line).string());
  }
  return out;
}

// What Theos would compile of `folder` (its list `name`_FILES): Theos itself
// is replaced by makefiles that only print the list.
std::vector<std::string> theosList(const fs::path& folder, const std::string& name) {
  testing::TempDeviceRoot theos;
  const fs::path makefiles = fs::path(theos.path()) / "makefiles";
  fs::create_directories(makefiles);
  std::ofstream(makefiles / "common.mk") << "THEOS_MAKE_PATH := $(THEOS)/makefiles\n";
  std::ofstream(makefiles / "aggregate.mk") << "\n";
  for (const char* kind : {"tweak.mk", "bundle.mk"}) {
    std::ofstream(makefiles / kind) << "hushwall-files:\n\t@printf '%s\\n' $(" << name << "_FILES)\n";
  }
  return files(run(std::string(HUSHWALL_MAKE) + " -s -C '" + folder.string() + "' THEOS='" + theos.path() +
                   "' hushwall-files"));
}

std::vector<std::string> scriptList(const char* list) {
  return files(run(std::string("'") + HUSHWALL_PACKAGE_SCRIPT + "' --list-sources " + list));
}

TEST(PackageLayout, BothBuildsCompileTheSameSourcesInTheOrderTheAdapterNeeds) {
  const std::vector<std::string> scriptTweak = scriptList("tweak");
  // The same files in the same order from the one list, for Theos and for
  // scripts/package-device.sh alike.
  EXPECT_EQ(theosList(kDevice, "Hushwall"), scriptTweak);
  // And exactly the logic and the adapter that the Linux build links.
  const std::vector<std::string> linked = files(HUSHWALL_PHONE_SOURCES, '|');
  EXPECT_EQ(std::multiset<std::string>(scriptTweak.begin(), scriptTweak.end()),
            std::multiset<std::string>(linked.begin(), linked.end()));
  // Under the GNU runtime each Objective-C file registers its classes from
  // an initialiser of its own, and initialisers run in link order: the one
  // that starts the tweak must come after every Objective-C++ file.
  ASSERT_FALSE(scriptTweak.empty());
  EXPECT_EQ(scriptTweak.back(),
            fs::weakly_canonical(kDevice / "../platform/darwin/load_time_initializer.cpp"));

  const std::vector<std::string> scriptBundle = scriptList("settings");
  EXPECT_EQ(theosList(kDevice / "HushwallSettings", "HushwallSettings"), scriptBundle);
  ASSERT_FALSE(scriptBundle.empty());
  for (const std::string& file : scriptBundle) {
    EXPECT_EQ(file.find("_test."), std::string::npos) << file;
  }
  EXPECT_NE(std::find(scriptBundle.begin(), scriptBundle.end(),
                      fs::weakly_canonical(kDevice /
                                           "HushwallSettings/HushwallSettingsListController.m")),
            scriptBundle.end());
}

}  // namespace
}  // namespace hushwall
