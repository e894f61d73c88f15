// The simulated device's file system: every device path lives under one
// device root directory on the Linux host, which is the device's "/" the way
// a chroot makes a directory one, and no path leaves it through a link (see
// device_root.h for the rule). A device path holding a NUL character names
// no file: every operation on it fails. A path refused for a link fails as
// the platform's calls fail for a file that cannot be had: false, nothing.
#ifndef HUSHWALL_PLATFORM_LINUX_DEVICE_ROOT_FILE_SYSTEM_H_
#define HUSHWALL_PLATFORM_LINUX_DEVICE_ROOT_FILE_SYSTEM_H_

#include <optional>
#include <string>

#include "host/file_system.h"
#include "platform/linux/device_root.h"

namespace hushwall::linux_platform {

class DeviceRootFileSystem : public host::FileSystem {
 public:
  // `root` is a native directory; it need not exist yet (it is opened at
  // the first operation that finds it).
  explicit DeviceRootFileSystem(std::string root);

  const std::string& root() const { return root_; }
  // The root, held open; null while the directory does not exist.
  const DeviceRoot* deviceRoot();

  // The root joined with the device path resolved lexically ("." and empty
  // components dropped, ".." taking one away, never the root), once every
  // folder on the way is known to be a real folder and the file not a link.
  // A path that is refused for a link gives ":memory:": SQLite opens an
  // empty database in memory there, so the library reads nothing and loses
  // its writes, as with any database it cannot use, and touches no file.
  std::string nativePath(const host::Text& devicePath) override;
  bool fileExists(const host::Text& devicePath) override;
  bool removeItem(const host::Text& devicePath) override;
  bool createDirectory(const host::Text& devicePath) override;
  // Of a regular file only (the template database is the one thing copied).
  bool copyItem(const host::Text& fromDevicePath, const host::Text& toDevicePath) override;
  bool writeAtomically(const host::Text& devicePath, const host::Bytes& bytes) override;
  // Only a regular file is read: a FIFO, a device or a folder in its place
  // reads as no file, as does one over the settings file's size limit.
  std::optional<host::Dict> dictionaryWithContentsOfFile(const host::Text& devicePath) override;
  std::optional<std::vector<host::Text>> contentsOfDirectory(const host::Text& devicePath) override;

 private:
  static bool usable(const host::Text& devicePath);

  std::string root_;
  std::optional<DeviceRoot> opened_;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_DEVICE_ROOT_FILE_SYSTEM_H_
