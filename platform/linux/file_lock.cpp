#include "platform/linux/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace hushwall::linux_platform {

FileLock::FileLock(const DeviceRoot& root, const std::string& devicePath) {
  const std::string lockPath = devicePath + ".lock";
  // Without waiting: a FIFO in its place is refused, not waited on.
  fd_ = root.open(lockPath, O_RDWR | O_CREAT | O_NONBLOCK | O_NOCTTY, 0644).release();
  struct stat st {};
  if (fd_ < 0 || ::fstat(fd_, &st) != 0 || !S_ISREG(st.st_mode)) {
    int error = fd_ < 0 ? errno : EINVAL;
    if (fd_ >= 0) ::close(fd_);
    throw std::runtime_error(error == EINVAL ? root.joined(lockPath) + " is not a regular file"
                                             : root.failure("cannot open the lock file", lockPath, error));
  }
  while (::flock(fd_, LOCK_EX) != 0) {
    if (errno == EINTR) continue;
    int error = errno;
    ::close(fd_);
    throw std::runtime_error("cannot lock " + root.joined(lockPath) + ": " + std::strerror(error));
  }
}

FileLock::~FileLock() { ::close(fd_); }

}  // namespace hushwall::linux_platform
