#include "platform/linux/device_root_file_system.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include <sys/stat.h>

#include "platform/linux/device_bundles.h"
#include "platform/linux/plist_file.h"
#include "platform/linux/vcard_address_book.h"
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

std::map<std::string, std::string> snapshot(const std::string& directory) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    files[entry.path()] = entry.is_symlink() ? "-> " + fs::read_symlink(entry.path()).string()
                                             : entry.is_directory() ? "/" : slurp(entry.path());
  }
  return files;
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
    const auto before = snapshot(decoy);
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
    EXPECT_EQ(snapshot(decoy), before) << "openat2: " << openat2;
  }
  DeviceRoot::useOpenat2(true);
}

// A FIFO, a folder or a file over its size limit where the library reads a
// file reads as no file, at once; the contacts are read again only when the
// file changed.
TEST(DeviceRootFileSystemTest, OnlyRegularFilesAreReadAndTheContactsOncePerChange) {
  testing::TempDeviceRoot root;
  DeviceRootFileSystem files(root.path());
  VCardAddressBook book(files, "/Contacts.vcf");
  ASSERT_EQ(::mkfifo(root.native("/fifo").c_str(), 0644), 0);
  ASSERT_EQ(::mkfifo(root.native("/Contacts.vcf").c_str(), 0644), 0);
  fs::create_directory(root.native("/folder"));
  EXPECT_FALSE(files.dictionaryWithContentsOfFile(T("/fifo")));
  EXPECT_FALSE(files.dictionaryWithContentsOfFile(T("/folder")));
  EXPECT_FALSE(files.copyItem(T("/fifo"), T("/copy")));
  EXPECT_FALSE(book.hasPersonMatchingPhoneNumber(T("+491701234567")));
  fs::remove(root.native("/Contacts.vcf"));

  const std::string contacts = root.native("/Contacts.vcf");
  writeContactsVCard(contacts, {"+491701234567"});
  EXPECT_TRUE(book.hasPersonMatchingPhoneNumber(T("+491701234567")));
  fs::resize_file(contacts, kMaxContactsFileBytes + 1);
  EXPECT_FALSE(book.hasPersonMatchingPhoneNumber(T("+491701234567"))) << "over the limit: no contacts";
  writeContactsVCard(contacts, {"+491701234567"});
  EXPECT_TRUE(book.hasPersonMatchingPhoneNumber(T("+491701234567")));
  // The same size and time, another number written in place: still the
  // numbers read before, since nothing says the file changed.
  const auto time = fs::last_write_time(contacts);
  std::string text = slurp(contacts);
  text.replace(text.find("+491701234567"), 13, "+491701234568");
  std::ofstream(contacts, std::ios::binary | std::ios::in | std::ios::out) << text;
  fs::last_write_time(contacts, time);
  EXPECT_TRUE(book.hasPersonMatchingPhoneNumber(T("+491701234567")));
  fs::last_write_time(contacts, time + std::chrono::seconds(1));
  EXPECT_FALSE(book.hasPersonMatchingPhoneNumber(T("+491701234567")));
  EXPECT_TRUE(book.hasPersonMatchingPhoneNumber(T("+491701234568")));
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
