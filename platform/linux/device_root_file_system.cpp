#include "platform/linux/device_root_file_system.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <system_error>

#include "platform/linux/plist_file.h"

namespace hushwall::linux_platform {
namespace fs = std::filesystem;

DeviceRootFileSystem::DeviceRootFileSystem(std::string root) : root_(std::move(root)) {
  while (root_.size() > 1 && root_.back() == '/') root_.pop_back();
}

std::string DeviceRootFileSystem::nativePath(const host::Text& devicePath) {
  // Device paths are absolute; a relative one is taken from the device's "/"
  // as well, so nothing the logic builds can point outside the root by
  // accident. ("..") is not interpreted: it is the logic's own path.
  std::string path = host::toUtf8(devicePath);
  if (path.empty() || path.front() != '/') path.insert(path.begin(), '/');
  return root_ + path;
}

bool DeviceRootFileSystem::fileExists(const host::Text& devicePath) {
  std::error_code ec;
  return fs::exists(nativePath(devicePath), ec);
}

bool DeviceRootFileSystem::removeItem(const host::Text& devicePath) {
  std::error_code ec;
  return fs::remove_all(nativePath(devicePath), ec) > 0 && !ec;
}

bool DeviceRootFileSystem::createDirectory(const host::Text& devicePath) {
  std::error_code ec;
  std::string path = nativePath(devicePath);
  fs::create_directories(path, ec);
  return !ec && fs::is_directory(path, ec);
}

bool DeviceRootFileSystem::copyItem(const host::Text& fromDevicePath,
                                    const host::Text& toDevicePath) {
  std::error_code ec;
  std::string to = nativePath(toDevicePath);
  if (fs::exists(to, ec)) return false;  // the platform never overwrites here
  fs::copy(nativePath(fromDevicePath), to, fs::copy_options::recursive, ec);
  return !ec;
}

bool DeviceRootFileSystem::writeAtomically(const host::Text& devicePath,
                                           const host::Bytes& bytes) {
  std::string path = nativePath(devicePath);
  std::string temp = path + ".tmp-" + std::to_string(::getpid());
  int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  std::size_t done = 0;
  while (done < bytes.size()) {
    ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
    if (n <= 0) break;
    done += static_cast<std::size_t>(n);
  }
  bool ok = done == bytes.size() && ::fsync(fd) == 0;
  ok = (::close(fd) == 0) && ok;
  if (ok && std::rename(temp.c_str(), path.c_str()) == 0) return true;
  ::unlink(temp.c_str());
  return false;
}

std::optional<host::Dict> DeviceRootFileSystem::dictionaryWithContentsOfFile(
    const host::Text& devicePath) {
  return readPlistDictionary(nativePath(devicePath));
}

}  // namespace hushwall::linux_platform
