// An exclusive lock between processes that read, change and rewrite one
// file. The rewrite renames a new file into place, so the lock cannot sit on
// the file itself (each writer would lock a different inode); it sits on a
// lock file beside it, "<file>.lock", which is never renamed or removed.
#ifndef HUSHWALL_PLATFORM_LINUX_FILE_LOCK_H_
#define HUSHWALL_PLATFORM_LINUX_FILE_LOCK_H_

#include <string>

#include "platform/linux/device_root.h"

namespace hushwall::linux_platform {

class FileLock {
 public:
  // Creates "<devicePath>.lock" in the device root when missing and waits
  // for flock(2)'s exclusive lock on it. The file's directory must exist.
  // Throws std::runtime_error naming the lock file when it cannot be had (a
  // link on the way or in its place, anything but a regular file).
  FileLock(const DeviceRoot& root, const std::string& devicePath);
  // Releases the lock (closing the descriptor does).
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

 private:
  int fd_ = -1;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_FILE_LOCK_H_
