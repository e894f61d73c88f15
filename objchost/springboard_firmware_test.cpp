// The firmware generations against the hook table and the package's
// firmware range (device/control); springboard_firmware_test.mm holds their
// methods to the adapter's compiled shapes. (Kept apart from it: a C++
// exception is not caught in an Objective-C++ file under this runtime.)
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "objchost/springboard_firmware.h"
#include "startup/hook_table.h"

namespace hushwall::objchost {
namespace {

// device/control's firmware (>= A.B) and (<< C.D), as major * 100 + minor.
std::pair<int, int> controlledFirmware() {
  std::stringstream text;
  text << std::ifstream(HUSHWALL_DEVICE_CONTROL).rdbuf();
  const std::string control = text.str();
  std::smatch since, before;
  if (!std::regex_search(control, since, std::regex(R"(firmware \(>= ([0-9]+)\.([0-9]+)\))")) ||
      !std::regex_search(control, before, std::regex(R"(firmware \(<< ([0-9]+)\.([0-9]+)\))"))) {
    return {0, 0};
  }
  return {std::stoi(since[1]) * 100 + std::stoi(since[2]),
          std::stoi(before[1]) * 100 + std::stoi(before[2])};
}

// Every hooked method's range says where it comes from; each SpringBoard
// role (a class's method, in whichever of its shapes) exists without a gap
// over a range, and the package promises exactly what every role covers.
// The generations follow one another over that range, and each SpringBoard
// method the table replaces is in exactly the generations its range covers:
// a range that cuts a generation, or a profile that lacks a method in range
// (or has one out of it), fails here.
TEST(FirmwareGenerations, CoverThePackagesRangeAndAgreeWithTheHookTable) {
  std::map<std::string, std::vector<std::pair<int, int>>> roles;
  for (const HookGroup* group : {&kWhatsAppHooks, &kSpringBoardHooks}) {
    for (std::size_t i = 0; i < group->count; ++i) {
      const HookEntry& e = group->entries[i];
      SCOPED_TRACE(std::string(e.className) + " " + e.selector);
      ASSERT_NE(e.availability.note, nullptr);
      EXPECT_GT(std::string(e.availability.note).size(), 10u);
      EXPECT_LE(e.availability.since, e.availability.before);
      // The messenger's methods follow WhatsApp, not the firmware; an added
      // method exists wherever its class does.
      const bool firmwareBound = group == &kSpringBoardHooks && e.how == HookEntry::How::kReplace;
      EXPECT_EQ(e.availability.since != 0, firmwareBound);
      if (!firmwareBound) continue;
      const std::string selector = e.selector;
      roles[std::string(e.className) + " " + selector.substr(0, selector.find(':'))].push_back(
          {e.availability.since, e.availability.before});
      for (std::size_t p = 0; p < kFirmwareProfileCount; ++p) {
        const FirmwareProfile& profile = kFirmwareProfiles[p];
        const bool inRange = e.availability.since <= profile.since && profile.before <= e.availability.before;
        const bool outOfRange = profile.before <= e.availability.since || e.availability.before <= profile.since;
        ASSERT_TRUE(inRange || outOfRange) << "cuts " << profile.name;
        EXPECT_EQ(methodOf(profile, e.className, e.selector) != nullptr, inRange) << profile.name;
      }
    }
  }
  ASSERT_EQ(roles.size(), 4u);  // banner, lock screen, notification centre, badge
  int since = 0, before = 10000;
  for (auto& [role, ranges] : roles) {
    std::sort(ranges.begin(), ranges.end());
    for (std::size_t i = 1; i < ranges.size(); ++i) {
      EXPECT_EQ(ranges[i].first, ranges[i - 1].second) << role << ": a gap or an overlap";
    }
    since = std::max(since, ranges.front().first);
    before = std::min(before, ranges.back().second);
  }
  EXPECT_EQ(controlledFirmware(), std::make_pair(since, before))
      << "device/control must say firmware (>= " << since / 100 << "." << since % 100
      << "), firmware (<< " << before / 100 << "." << before % 100 << ")";
  EXPECT_EQ(kFirmwareProfiles[0].since, since);
  for (std::size_t i = 1; i < kFirmwareProfileCount; ++i) {
    EXPECT_EQ(kFirmwareProfiles[i].since, kFirmwareProfiles[i - 1].before) << i;
  }
  EXPECT_EQ(kFirmwareProfiles[kFirmwareProfileCount - 1].before, before);
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
