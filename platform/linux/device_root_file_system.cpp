#include "platform/linux/device_root_file_system.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "platform/linux/atomic_file.h"
#include "platform/linux/plist_file.h"

namespace hushwall::linux_platform {
namespace fs = std::filesystem;

DeviceRootFileSystem::DeviceRootFileSystem(std::string root) : root_(std::move(root)) {
  while (root_.size() > 1 && root_.back() == '/') root_.pop_back();
}

std::string DeviceRootFileSystem::nativePath(const host::Text& devicePath) {
  // The root is the device's "/", as a chroot makes it: every device path is
  // taken from there (a relative one too), and ".." climbs at most to it.
  // The native path is resolved here, lexically, because the host's own
  // resolution would let "/.." leave the root: the simulator runs as root, and
  // a path built from a hostile sender's address would then write anywhere.
  const std::string path = host::toUtf8(devicePath);
  std::string resolved;
  std::string_view rest = path;
  while (!rest.empty()) {
    std::size_t slash = rest.find('/');
    std::string_view component = rest.substr(0, slash);
    rest.remove_prefix(slash == std::string_view::npos ? rest.size() : slash + 1);
    if (component.empty() || component == ".") continue;
    if (component == "..") {
      resolved.erase(std::min(resolved.size(), resolved.rfind('/')));
    } else {
      resolved.append("/").append(component);
    }
  }
  return root_ + (resolved.empty() ? "/" : resolved);
}

bool DeviceRootFileSystem::usable(const host::Text& devicePath) {
  // The file system's calls end a path at its first NUL character, which
  // would name another file than the one asked for.
  return devicePath.find(u'\0') == host::Text::npos;
}

bool DeviceRootFileSystem::fileExists(const host::Text& devicePath) {
  std::error_code ec;
  return usable(devicePath) && fs::exists(nativePath(devicePath), ec);
}

bool DeviceRootFileSystem::removeItem(const host::Text& devicePath) {
  std::error_code ec;
  return usable(devicePath) && fs::remove_all(nativePath(devicePath), ec) > 0 && !ec;
}

bool DeviceRootFileSystem::createDirectory(const host::Text& devicePath) {
  if (!usable(devicePath)) return false;
  std::error_code ec;
  std::string path = nativePath(devicePath);
  fs::create_directories(path, ec);
  return !ec && fs::is_directory(path, ec);
}

bool DeviceRootFileSystem::copyItem(const host::Text& fromDevicePath,
                                    const host::Text& toDevicePath) {
  if (!usable(fromDevicePath) || !usable(toDevicePath)) return false;
  std::error_code ec;
  std::string to = nativePath(toDevicePath);
  if (fs::exists(to, ec)) return false;  // the platform never overwrites here
  fs::copy(nativePath(fromDevicePath), to, fs::copy_options::recursive, ec);
  return !ec;
}

bool DeviceRootFileSystem::writeAtomically(const host::Text& devicePath,
                                           const host::Bytes& bytes) {
  if (!usable(devicePath)) return false;
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
  if (!usable(devicePath)) return std::nullopt;
  return readPlistDictionary(nativePath(devicePath));
}

std::optional<std::vector<host::Text>> DeviceRootFileSystem::contentsOfDirectory(
    const host::Text& devicePath) {
  if (!usable(devicePath)) return std::nullopt;
  std::error_code ec;
  fs::directory_iterator it(nativePath(devicePath), ec);
  if (ec) return std::nullopt;
  std::vector<host::Text> names;
  // A failed step ends the iteration as well, so the error is looked at
  // after the loop: a partial listing is no listing.
  for (; it != fs::directory_iterator(); it.increment(ec)) {
    names.push_back(host::fromUtf8(it->path().filename().string()));
  }
  if (ec) return std::nullopt;
  return names;
}

}  // namespace hushwall::linux_platform
