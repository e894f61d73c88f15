#include "platform/linux/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace hushwall::linux_platform {

FileLock::FileLock(const std::string& nativePath) {
  const std::string lockPath = nativePath + ".lock";
  fd_ = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd_ < 0) throw std::runtime_error("cannot open the lock file " + lockPath + ": " + std::strerror(errno));
  while (::flock(fd_, LOCK_EX) != 0) {
    if (errno == EINTR) continue;
    int error = errno;
    ::close(fd_);
    throw std::runtime_error("cannot lock " + lockPath + ": " + std::strerror(error));
  }
}

FileLock::~FileLock() { ::close(fd_); }

}  // namespace hushwall::linux_platform
