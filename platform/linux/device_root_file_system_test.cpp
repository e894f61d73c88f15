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
