#include "platform/linux/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace hushwall::linux_platform {
namespace {

[[noreturn]] void fail(const std::string& what, const std::string& path, int error) {
  throw std::runtime_error(what + " " + path + ": " + std::strerror(error));
}

}  // namespace

void writeFileAtomically(const std::string& nativePath, std::string_view bytes) {
  // mkstemp needs a writable template; the temporary name sits next to the
  // target so that the rename stays within one file system.
  std::string pattern = nativePath + ".tmp-XXXXXX";
  std::vector<char> temp(pattern.begin(), pattern.end());
  temp.push_back('\0');
  int fd = ::mkstemp(temp.data());
  if (fd < 0) fail("cannot create a temporary file for", nativePath, errno);
  std::string tempPath(temp.data());

  int error = 0;
  // Other processes (the messenger, SpringBoard) read these files, so they get
  // the usual permissions rather than mkstemp's owner-only ones.
  if (::fchmod(fd, 0644) != 0) error = errno;
  std::size_t done = 0;
  while (error == 0 && done < bytes.size()) {
    ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) error = n < 0 ? errno : EIO;
    else done += static_cast<std::size_t>(n);
  }
  if (error == 0 && ::fsync(fd) != 0) error = errno;
  if (::close(fd) != 0 && error == 0) error = errno;
  if (error == 0 && std::rename(tempPath.c_str(), nativePath.c_str()) != 0) error = errno;
  if (error != 0) {
    ::unlink(tempPath.c_str());
    fail("cannot write", nativePath, error);
  }
}

}  // namespace hushwall::linux_platform
