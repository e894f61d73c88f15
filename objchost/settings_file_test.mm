// The settings bundle's writer of the settings file, under GNUstep's
// Foundation: a binary property list replaced whole, one key changed at a
// time, and no change lost when two writers (two processes, as the
// Settings app and hushwallctl on a device) race.
#include "device/HushwallSettings/settings_file.h"

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "testing/temp_device_root.h"

namespace {

namespace fs = std::filesystem;

struct SettingsFile : ::testing::Test {
  void SetUp() override {
    pool = [[NSAutoreleasePool alloc] init];
    path = [NSString stringWithUTF8String:(dir.path() + "/com.Corvanta.HushwallSettings.plist").c_str()];
  }
  void TearDown() override { [pool drain]; }
  NSAutoreleasePool* pool = nil;
  hushwall::testing::TempDeviceRoot dir;
  NSString* path = nil;
};

TEST_F(SettingsFile, EachWriteKeepsTheOtherKeysInABinaryPropertyList) {
  EXPECT_EQ([HWReadSettings(path) count], 0u);
  // A file that is not a dictionary reads as none, and is replaced by one.
  [@[ @"not", @"settings" ] writeToFile:path atomically:YES];
  EXPECT_EQ([HWReadSettings(path) count], 0u);
  ASSERT_TRUE(HWWriteSetting(path, @"Enabled", [NSNumber numberWithBool:YES]));
  ASSERT_TRUE(HWWriteSetting(path, @"Vibrate", [NSNumber numberWithBool:NO]));
  ASSERT_TRUE(HWWriteSetting(path, @"Enabled", [NSNumber numberWithBool:NO]));
  NSDictionary* settings = HWReadSettings(path);
  EXPECT_EQ([settings count], 2u);
  EXPECT_FALSE([[settings objectForKey:@"Enabled"] boolValue]);
  EXPECT_NE([settings objectForKey:@"Vibrate"], nil);
  NSData* bytes = [NSData dataWithContentsOfFile:path];
  ASSERT_GE([bytes length], 8u);
  EXPECT_EQ(std::string(static_cast<const char*>([bytes bytes]), 8), "bplist00");
  // Every writer locks the same file beside it.
  EXPECT_TRUE(fs::exists(dir.path() + "/com.Corvanta.HushwallSettings.plist.lock"));
  // Nothing to write: refused, file untouched.
  EXPECT_FALSE(HWWriteSetting(path, nil, [NSNumber numberWithBool:YES]));
  EXPECT_FALSE(HWWriteSetting(path, @"Enabled", nil));
  EXPECT_EQ([HWReadSettings(path) count], 2u);
}

TEST_F(SettingsFile, TwoProcessesWritingAtOnceLoseNoChange) {
  constexpr int kWrites = 150;
  pid_t writers[2];
  const char* keys[2] = {"SaveHistory", "ContactsOnly"};
  for (int w = 0; w < 2; ++w) {
    writers[w] = ::fork();
    ASSERT_GE(writers[w], 0);
    if (writers[w] == 0) {
      NSAutoreleasePool* childPool = [[NSAutoreleasePool alloc] init];
      NSString* key = [NSString stringWithUTF8String:keys[w]];
      bool ok = true;
      for (int i = 1; i <= kWrites; ++i) {
        ok = HWWriteSetting(path, key, [NSNumber numberWithInt:i]) && ok;
      }
      [childPool drain];
      ::_exit(ok ? 0 : 1);
    }
  }
  for (pid_t writer : writers) {
    int status = 0;
    ASSERT_EQ(::waitpid(writer, &status, 0), writer);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  // A read that missed the other writer's rename would have put back its
  // older value.
  NSDictionary* settings = HWReadSettings(path);
  for (const char* key : keys) {
    EXPECT_EQ([[settings objectForKey:[NSString stringWithUTF8String:key]] intValue], kWrites)
        << key;
  }
}

}  // namespace
