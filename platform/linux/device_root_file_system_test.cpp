#include "platform/linux/device_root_file_system.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/linux/device_bundles.h"
#include "testing/temp_device_root.h"

namespace hushwall::linux_platform {
namespace {

using host::T;
namespace fs = std::filesystem;

std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(DeviceRootFileSystemTest, DevicePathsStayUnderTheRoot) {
  testing::TempDeviceRoot root;
  DeviceRootFileSystem files(root.path() + "/");
  EXPECT_EQ(files.nativePath(T("/var/mobile/x.db")), root.path() + "/var/mobile/x.db");
  EXPECT_EQ(files.nativePath(T("relative")), root.path() + "/relative");
  EXPECT_EQ(files.nativePath(T("/")), root.path() + "/");
}

TEST(DeviceRootFileSystemTest, ParentFoldersStopAtTheRootAsInAChroot) {
  testing::TempDeviceRoot work;
  const std::string root = work.path() + "/device";
  fs::create_directories(root);
  DeviceRootFileSystem files(root);
  EXPECT_EQ(files.nativePath(T("/../../etc/passwd")), root + "/etc/passwd");
  EXPECT_EQ(files.nativePath(T("/a/./b/../c//d/")), root + "/a/c/d");
  EXPECT_EQ(files.nativePath(T("a/../../..")), root + "/");
  EXPECT_EQ(files.nativePath(T("/a/..b/.c")), root + "/a/..b/.c") << "only whole components count";

  // Every operation goes through the same resolution: nothing lands beside
  // the root however many ".." a path holds.
  const auto climbing = T("/var/mobile/../../../../../escape");
  EXPECT_TRUE(files.createDirectory(climbing));
  EXPECT_TRUE(files.writeAtomically(climbing + T("/../../escape/p.png"), {'x'}));
  EXPECT_TRUE(files.copyItem(T("/../escape/p.png"), T("/../../copy.png")));
  EXPECT_EQ(slurp(root + "/escape/p.png"), "x");
  EXPECT_EQ(slurp(root + "/copy.png"), "x");
  EXPECT_TRUE(files.fileExists(T("/../../../copy.png")));
  EXPECT_FALSE(fs::exists(work.path() + "/escape"));
  EXPECT_FALSE(fs::exists(work.path() + "/copy.png"));
  EXPECT_TRUE(files.removeItem(T("/../../escape")));
  EXPECT_FALSE(fs::exists(root + "/escape"));

  // A NUL would end the path early for the host: such a path names nothing.
  const host::Text withNul = T("/var/x") + host::Text(1, u'\0') + T("y");
  EXPECT_FALSE(files.createDirectory(withNul));
  EXPECT_FALSE(files.writeAtomically(withNul, {'x'}));
  EXPECT_FALSE(files.fileExists(withNul));
  EXPECT_FALSE(fs::exists(root + "/var/x"));
  ASSERT_TRUE(files.createDirectory(T("/var")));
  EXPECT_EQ(files.contentsOfDirectory(T("/var") + host::Text(1, u'\0')), std::nullopt)
      << "the listing of /var was given for a path that is not /var";
}

TEST(DeviceRootFileSystemTest, FolderOperationsBehaveLikeTheFileManager) {
  testing::TempDeviceRoot root;
  DeviceRootFileSystem files(root.path());
  const auto dir = T("/var/mobile/Library/Preferences/Hushwall");
  EXPECT_FALSE(files.fileExists(dir));
  EXPECT_TRUE(files.createDirectory(dir));
  EXPECT_TRUE(files.createDirectory(dir));  // already there is fine
  EXPECT_TRUE(files.writeAtomically(dir + T("/4917/a.png"), {}) == false)
      << "writing into a folder that does not exist fails";
  ASSERT_TRUE(files.createDirectory(dir + T("/4917")));
  ASSERT_TRUE(files.writeAtomically(dir + T("/4917/a.png"), {'a', 'b'}));
  EXPECT_EQ(slurp(root.native("/var/mobile/Library/Preferences/Hushwall/4917/a.png")), "ab");
  ASSERT_TRUE(files.writeAtomically(dir + T("/4917/a.png"), {'c'}));
  EXPECT_EQ(slurp(root.native("/var/mobile/Library/Preferences/Hushwall/4917/a.png")), "c");

  // Removing a folder takes everything in it.
  EXPECT_TRUE(files.removeItem(dir));
  EXPECT_FALSE(files.fileExists(dir + T("/4917/a.png")));
  EXPECT_FALSE(files.removeItem(dir));
}

TEST(DeviceRootFileSystemTest, CopyNeverOverwrites) {
  testing::TempDeviceRoot root;
  DeviceRootFileSystem files(root.path());
  ASSERT_TRUE(files.writeAtomically(T("/from"), {'1'}));
  EXPECT_FALSE(files.copyItem(T("/missing"), T("/to")));
  EXPECT_TRUE(files.copyItem(T("/from"), T("/to")));
  ASSERT_TRUE(files.writeAtomically(T("/from"), {'2'}));
  EXPECT_FALSE(files.copyItem(T("/from"), T("/to")));
  EXPECT_EQ(slurp(root.native("/to")), "1");
}

TEST(DeviceBundlesTest, BundlesAreFoldersAndEachAppHasItsOwnDocuments) {
  testing::TempDeviceRoot root;
  DeviceRootFileSystem files(root.path());
  DeviceBundles whatsapp(files, T("net.whatsapp.WhatsApp"));
  DeviceBundles unnamed(files, std::nullopt);
  EXPECT_FALSE(whatsapp.bundlePath(T("/Library/PreferenceBundles/HushwallSettings.bundle")));
  root.installSettingsBundle();
  EXPECT_EQ(whatsapp.bundlePath(T("/Library/PreferenceBundles/HushwallSettings.bundle")),
            T("/Library/PreferenceBundles/HushwallSettings.bundle"));
  EXPECT_FALSE(whatsapp.bundlePath(T("/Library/PreferenceBundles/HushwallSettings.bundle/HSWL.db")));
  EXPECT_FALSE(unnamed.mainBundleIdentifier().has_value());
  EXPECT_NE(whatsapp.documentsDirectory(), unnamed.documentsDirectory());
}

}  // namespace
}  // namespace hushwall::linux_platform
