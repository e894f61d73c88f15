// The firmware generations against the hook table and the package's
// firmware range, and the versions that name them.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>

#include "objchost/springboard_firmware.h"
#include "startup/hook_table.h"

namespace hushwall::objchost {
namespace {

// device/control's firmware (>= A.B) and (<< C.D), as major * 100 + minor.
std::pair<int, int> controlledFirmware() {
  std::ifstream in(HUSHWALL_DEVICE_CONTROL);
  std::stringstream text;
  text << in.rdbuf();
  const std::string control = text.str();
  std::smatch since, before;
  if (!std::regex_search(control, since, std::regex(R"(firmware \(>= ([0-9]+)\.([0-9]+)\))")) ||
      !std::regex_search(control, before, std::regex(R"(firmware \(<< ([0-9]+)\.([0-9]+)\))"))) {
    return {0, 0};
  }
  return {std::stoi(since[1]) * 100 + std::stoi(since[2]),
          std::stoi(before[1]) * 100 + std::stoi(before[2])};
}

// The generations follow one another from the package's first firmware to
// its last, and each SpringBoard method the table replaces is in exactly
// the generations its range covers: a range that cuts a generation, or a
// profile that lacks a method in range (or has one out of it), fails here.
TEST(FirmwareGenerations, CoverThePackagesRangeAndAgreeWithTheHookTable) {
  const auto [since, before] = controlledFirmware();
  ASSERT_EQ(kFirmwareProfiles[0].since, since) << "device/control's first firmware";
  for (std::size_t i = 1; i < kFirmwareProfileCount; ++i) {
    EXPECT_EQ(kFirmwareProfiles[i].since, kFirmwareProfiles[i - 1].before) << i;
  }
  EXPECT_EQ(kFirmwareProfiles[kFirmwareProfileCount - 1].before, before)
      << "device/control's end";
  for (std::size_t e = 0; e < kSpringBoardHooks.count; ++e) {
    const HookEntry& entry = kSpringBoardHooks.entries[e];
    if (entry.how != HookEntry::How::kReplace) continue;
    for (std::size_t p = 0; p < kFirmwareProfileCount; ++p) {
      const FirmwareProfile& profile = kFirmwareProfiles[p];
      const bool inRange = entry.availability.since <= profile.since &&
                           profile.before <= entry.availability.before;
      const bool outOfRange = profile.before <= entry.availability.since ||
                              entry.availability.before <= profile.since;
      ASSERT_TRUE(inRange || outOfRange) << entry.selector << " cuts " << profile.name;
      EXPECT_EQ(methodOf(profile, entry.className, entry.selector) != nullptr, inRange)
          << entry.className << " " << entry.selector << " on " << profile.name;
    }
  }
  // The versions that name the generations, and what is refused.
  EXPECT_STREQ(firmwareProfileFor("7.1.2").name, "7.0-7.1");
  EXPECT_STREQ(firmwareProfileFor("8.1").name, "8.0-8.1");
  EXPECT_STREQ(firmwareProfileFor("8.4.1").name, "8.2-8.4");
  for (const char* refused : {"6.1", "7.2", "8.5", "9.0", "8", "8.1x", "", " 8.1", "8.1.2.3"}) {
    EXPECT_THROW(firmwareProfileFor(refused), std::invalid_argument) << refused;
  }
}

}  // namespace
}  // namespace hushwall::objchost
