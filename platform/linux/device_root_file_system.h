// The simulated device's file system: every device path lives under one
// device root directory on the Linux host, which is the device's "/" the way
// a chroot makes a directory one: ".." cannot climb above it. A device path
// holding a NUL character names no file: every operation on it fails.
#ifndef HUSHWALL_PLATFORM_LINUX_DEVICE_ROOT_FILE_SYSTEM_H_
#define HUSHWALL_PLATFORM_LINUX_DEVICE_ROOT_FILE_SYSTEM_H_

#include <string>

#include "host/file_system.h"

namespace hushwall::linux_platform {

class DeviceRootFileSystem : public host::FileSystem {
 public:
  // `root` is a native directory; it need not exist yet.
  explicit DeviceRootFileSystem(std::string root);

  const std::string& root() const { return root_; }

  // The root joined with the device path resolved lexically ("." and empty
  // components dropped, ".." taking one away, never the root).
  std::string nativePath(const host::Text& devicePath) override;
  bool fileExists(const host::Text& devicePath) override;
  bool removeItem(const host::Text& devicePath) override;
  bool createDirectory(const host::Text& devicePath) override;
  bool copyItem(const host::Text& fromDevicePath, const host::Text& toDevicePath) override;
  bool writeAtomically(const host::Text& devicePath, const host::Bytes& bytes) override;
  std::optional<host::Dict> dictionaryWithContentsOfFile(const host::Text& devicePath) override;
  std::optional<std::vector<host::Text>> contentsOfDirectory(const host::Text& devicePath) override;

 private:
  static bool usable(const host::Text& devicePath);

  std::string root_;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_DEVICE_ROOT_FILE_SYSTEM_H_
