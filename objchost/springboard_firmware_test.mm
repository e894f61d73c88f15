// The firmware generations' methods against the adapter's compiled method
// shapes (springboard_firmware_test.cpp holds them to the hook table).
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "objchost/springboard_firmware.h"
#include "platform/darwin/method_shapes.h"
#include "startup/hook_table.h"

namespace hushwall::objchost {
namespace {

// Every method a generation shows has one arm64 encoding, whichever of its
// dumps it is read from (a 32-bit dump's char and unsigned included), and
// the adapter has a shape compiled in for it: a hooked method without one
// would be left unhooked, a sent one sent through NSInvocation.
TEST(FirmwareGenerations, EveryMethodHasOneArm64EncodingWithACompiledShape) {
  for (std::size_t p = 0; p < kFirmwareProfileCount; ++p) {
    const FirmwareProfile& profile = kFirmwareProfiles[p];
    std::map<std::string, std::string> encodings;
    for (std::size_t i = 0; i < profile.count; ++i) {
      const FirmwareMethod& method = profile.methods[i];
      for (std::size_t d = 0; d < kClassDumpCount; ++d) {
        if ((method.dumps & (1u << d)) == 0) continue;
        const ClassDump& dump = kClassDumps[d];
        EXPECT_TRUE(profile.since <= dump.firmware && dump.firmware < profile.before)
            << dump.where << " is not of " << profile.name;
        const std::string encoding = arm64Encoding(method, dump);
        const std::string key = std::string(method.className) + " " + method.selector;
        auto [known, first] = encodings.emplace(key, encoding);
        EXPECT_EQ(known->second, encoding) << key << " in " << dump.where;
        EXPECT_NE(darwin::shapeOf(darwin::canonicalEncoding(encoding.c_str())), nullptr)
            << key << " (" << encoding << ") on " << profile.name;
      }
    }
  }
  // The longer bulletin method, from 64-bit and 32-bit dumps alike.
  const FirmwareMethod* longer = methodOf(kFirmwareProfiles[2], "SBBulletinBannerController",
                                          "observer:addBulletin:forFeed:playLightsAndSirens:withReply:");
  ASSERT_NE(longer, nullptr);
  EXPECT_EQ(arm64Encoding(*longer, firstDumpOf(*longer)), "v@:@@QB@?");
  // What the table adds has a shape too.
  for (const HookGroup* group : {&kWhatsAppHooks, &kSpringBoardHooks}) {
    for (std::size_t e = 0; e < group->count; ++e) {
      const HookEntry& entry = group->entries[e];
      if (entry.how == HookEntry::How::kAdd) {
        EXPECT_NE(darwin::shapeOf(darwin::canonicalEncoding(entry.types)), nullptr) << entry.selector;
      }
    }
  }
}

}  // namespace
}  // namespace hushwall::objchost
