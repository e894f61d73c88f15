#include "platform/linux/device_root_file_system.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

#include <sys/stat.h>

#include "platform/linux/device_bundles.h"
#include "platform/linux/plist_file.h"
#include "testing/file_tree.h"
#include "testing/temp_device_root.h"

namespace hushwall::linux_platform {
namespace {

using host::T;
namespace fs = std::filesystem;

TEST(DeviceRootFileSystemTest, ParentFoldersStopAtTheRootAsInAChroot) {
  testing::TempDeviceRoot work;
  const std::string root = work.path() + "/device";
  fs::create_directories(root);
  DeviceRootFileSystem files(root);
  // A trailing '/' on the root is not doubled; only whole components count.
  EXPECT_EQ(DeviceRootFileSystem(root + "/").nativePath(T("/var/mobile/x.db")), root + "/var/mobile/x.db");
  for (const auto& [path, native] : std::map<std::string, std::string>{
           {"relative", "/relative"}, {"/", "/"}, {"/../../etc/passwd", "/etc/passwd"},
           {"/a/./b/../c//d/", "/a/c/d"}, {"a/../../..", "/"}, {"/a/..b/.c", "/a/..b/.c"}}) {
    EXPECT_EQ(files.nativePath(T(path)), root + native) << path;
  }
  // Every operation goes through the same resolution: nothing lands beside
  // the root however many ".." a path holds.
  const auto climbing = T("/var/mobile/../../../../../escape");
  EXPECT_TRUE(files.createDirectory(climbing));
  EXPECT_TRUE(files.writeAtomically(climbing + T("/../../escape/p.png"), {'x'}));
  EXPECT_TRUE(files.copyItem(T("/../escape/p.png"), T("/../../copy.png")));
  EXPECT_EQ(testing::fileBytes(root + "/escape/p.png"), "x");
  EXPECT_EQ(testing::fileBytes(root + "/copy.png"), "x");
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

// Links out of the root, out of it by "..", within it and dangling, as a
// folder on the way and as the file itself: no operation goes through one,
// with openat2 and without it, and the decoy beside the root stays as it was.
TEST(DeviceRootFileSystemTest, NoOperationGoesThroughALinkBelowTheRoot) {
  for (bool openat2 : {true, false}) {
    DeviceRoot::useOpenat2(openat2);
    testing::TempDeviceRoot work;
    const std::string root = work.path() + "/device", decoy = work.path() + "/decoy";
    fs::create_directories(decoy + "/dir");
    fs::create_directories(root + "/inside/real");
    std::ofstream(decoy + "/dir/file.png") << "decoy";
    writeBinaryPlist(decoy + "/settings.plist", {{T("Decoy"), host::Value::boolean(true)}});
    writeBinaryPlist(root + "/inside/real/file.png", {{T("Inside"), host::Value::boolean(true)}});
    const auto before = testing::treeSnapshot(decoy);
    for (const auto& [link, target] : std::map<std::string, std::string>{
             {"out-dir", decoy + "/dir"}, {"up-dir", "../decoy/dir"}, {"in-dir", "inside/real"},
             {"out-file", decoy + "/settings.plist"}, {"in-file", "inside/real/file.png"},
             {"dangling", decoy + "/new"}}) {
      fs::create_symlink(target, root + "/" + link);
    }
    DeviceRootFileSystem files(root);
    for (const char* folder : {"/out-dir", "/up-dir", "/in-dir"}) {
      const host::Text in = T(folder);
      EXPECT_FALSE(files.createDirectory(in + T("/sub"))) << folder;
      EXPECT_FALSE(files.writeAtomically(in + T("/p.png"), {'y'})) << folder;
      EXPECT_FALSE(files.fileExists(in + T("/file.png"))) << folder;
      EXPECT_FALSE(files.removeItem(in + T("/file.png"))) << folder;
      EXPECT_FALSE(files.contentsOfDirectory(in)) << folder;
      EXPECT_FALSE(files.dictionaryWithContentsOfFile(in + T("/file.png"))) << folder;
      EXPECT_FALSE(files.copyItem(in + T("/file.png"), T("/copy"))) << folder;
      EXPECT_EQ(files.nativePath(in + T("/file.png")), ":memory:") << folder;
    }
    for (const char* file : {"/out-file", "/in-file", "/dangling"}) {
      EXPECT_FALSE(files.dictionaryWithContentsOfFile(T(file))) << file;
      EXPECT_FALSE(files.writeAtomically(T(file), {'y'})) << file;
      EXPECT_FALSE(files.fileExists(T(file))) << file;
      EXPECT_FALSE(files.copyItem(T(file), T("/copy"))) << file;
      EXPECT_FALSE(files.copyItem(T("/inside/real/file.png"), T(file))) << file;
      EXPECT_EQ(files.nativePath(T(file)), ":memory:") << file;
    }
    EXPECT_TRUE(files.dictionaryWithContentsOfFile(T("/inside/real/file.png"))) << "the real file is read";
    EXPECT_FALSE(fs::exists(root + "/copy"));
    // Removing a folder removes the links in it, not what they name.
    fs::create_symlink(decoy + "/dir", root + "/inside/real/link");
    EXPECT_TRUE(files.removeItem(T("/inside")));
    EXPECT_TRUE(files.removeItem(T("/out-dir")));
    EXPECT_EQ(testing::treeSnapshot(decoy), before) << "openat2: " << openat2;
  }
  DeviceRoot::useOpenat2(true);
}

// A FIFO or a folder where the library reads a file reads as no file, at
// once (the contacts' own limits: vcard_address_book_test.cpp).
TEST(DeviceRootFileSystemTest, OnlyRegularFilesAreRead) {
  testing::TempDeviceRoot root;
  DeviceRootFileSystem files(root.path());
  ASSERT_EQ(::mkfifo(root.native("/fifo").c_str(), 0644), 0);
  fs::create_directory(root.native("/folder"));
  EXPECT_FALSE(files.dictionaryWithContentsOfFile(T("/fifo")));
  EXPECT_FALSE(files.dictionaryWithContentsOfFile(T("/folder")));
  EXPECT_FALSE(files.copyItem(T("/fifo"), T("/copy")));
}

TEST(DeviceRootFileSystemTest, FolderAndCopyOperationsBehaveLikeTheFileManager) {
  testing::TempDeviceRoot root;
  DeviceRootFileSystem files(root.path());
  const auto dir = T("/var/mobile/Library/Preferences/Hushwall");
  EXPECT_FALSE(files.fileExists(dir));
  EXPECT_TRUE(files.createDirectory(dir));
  EXPECT_TRUE(files.createDirectory(dir));  // already there is fine
  EXPECT_FALSE(files.writeAtomically(dir + T("/4917/a.png"), {})) << "no folder to write into";
  ASSERT_TRUE(files.createDirectory(dir + T("/4917")));
  ASSERT_TRUE(files.writeAtomically(dir + T("/4917/a.png"), {'a', 'b'}));
  EXPECT_EQ(testing::fileBytes(root.native("/var/mobile/Library/Preferences/Hushwall/4917/a.png")), "ab");
  ASSERT_TRUE(files.writeAtomically(dir + T("/4917/a.png"), {'c'}));
  // A copy never overwrites.
  EXPECT_FALSE(files.copyItem(dir + T("/4917/missing"), T("/to")));
  EXPECT_TRUE(files.copyItem(dir + T("/4917/a.png"), T("/to")));
  ASSERT_TRUE(files.writeAtomically(dir + T("/4917/a.png"), {'d'}));
  EXPECT_FALSE(files.copyItem(dir + T("/4917/a.png"), T("/to")));
  EXPECT_EQ(testing::fileBytes(root.native("/to")), "c");
  // Removing a folder takes everything in it.
  EXPECT_TRUE(files.removeItem(dir));
  EXPECT_FALSE(files.fileExists(dir + T("/4917/a.png")));
  EXPECT_FALSE(files.removeItem(dir));
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
