#include "platform/linux/device_root_file_system.h"

#include <filesystem>
#include <system_error>

#include "platform/linux/atomic_file.h"
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
  try {
    writeFileAtomically(nativePath(devicePath),
                        std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    return true;
  } catch (const std::exception&) {
    return false;  // the platform's write reports failure by its result only
  }
}

std::optional<host::Dict> DeviceRootFileSystem::dictionaryWithContentsOfFile(
    const host::Text& devicePath) {
  return readPlistDictionary(nativePath(devicePath));
}

std::optional<std::vector<host::Text>> DeviceRootFileSystem::contentsOfDirectory(
    const host::Text& devicePath) {
  std::error_code ec;
  fs::directory_iterator it(nativePath(devicePath), ec);
  if (ec) return std::nullopt;
  std::vector<host::Text> names;
  for (; it != fs::directory_iterator(); it.increment(ec)) {
    if (ec) return std::nullopt;
    names.push_back(host::fromUtf8(it->path().filename().string()));
  }
  return names;
}

}  // namespace hushwall::linux_platform
