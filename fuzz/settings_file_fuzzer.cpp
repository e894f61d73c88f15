// The settings loader over arbitrary bytes in the settings file (seeds: XML
// and binary property lists). SettingsChanged must always finish with a
// dictionary (empty for anything that is not a dictionary property list),
// write exactly the flags whose keys the file holds, with their boolValue,
// and leave every other flag as it was.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/fuzz_check.h"
#include "startup/settings.h"
#include "testing/fake_env.h"

namespace {

using hushwall::host::T;

struct Flag {
  const char* key;
  bool* flag;
};

const Flag kFlags[] = {
    {"Enabled", &hushwall::settings_Enabled},
    {"SaveHistory", &hushwall::settings_SaveHistory},
    {"ShowStatusbarIcon", &hushwall::settings_ShowStatusBarIcon},
    {"Vibrate", &hushwall::settings_Vibrate},
    {"ContactsOnly", &hushwall::settings_ContactsOnly},
    {"DeleteMessages", &hushwall::settings_DeleteMessages},
    {"ActionButton", &hushwall::settings_ActionButton},
};

struct World {
  World() : file(env.root.native(hushwall::kSettingsFilePath)) {
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
  }
  hushwall::testing::FakeEnv env;
  std::string file;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static World* world = new World();  // one device for the whole run
  {
    std::ofstream out(world->file, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  }
  // Flags from the input's last byte, so that "left as it was" is tested
  // from both values.
  const std::uint8_t before = size > 0 ? data[size - 1] : 0;
  for (std::size_t i = 0; i < std::size(kFlags); ++i) *kFlags[i].flag = (before >> i) & 1;

  hushwall::SettingsChanged();

  HUSHWALL_FUZZ_CHECK(hushwall::settingsDictionary != nullptr, "no dictionary after a reload");
  const hushwall::host::Dict& read = *hushwall::settingsDictionary;
  for (std::size_t i = 0; i < std::size(kFlags); ++i) {
    auto found = read.find(T(kFlags[i].key));
    const bool expected = found != read.end() ? found->second.boolValue() : ((before >> i) & 1);
    HUSHWALL_FUZZ_CHECK(*kFlags[i].flag == expected, kFlags[i].key);
  }
  return 0;
}
