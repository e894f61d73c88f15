#include "platform/linux/device_root_file_system.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/plist_file.h"

namespace hushwall::linux_platform {

DeviceRootFileSystem::DeviceRootFileSystem(std::string root) : root_(std::move(root)) {
  while (root_.size() > 1 && root_.back() == '/') root_.pop_back();
}

const DeviceRoot* DeviceRootFileSystem::deviceRoot() {
  if (!opened_) {
    try {
      opened_.emplace(root_);
    } catch (const DeviceFileError&) {
      return nullptr;
    }
  }
  return &*opened_;
}

bool DeviceRootFileSystem::usable(const host::Text& devicePath) {
  // The file system's calls end a path at its first NUL character, which
  // would name another file than the one asked for.
  return devicePath.find(u'\0') == host::Text::npos;
}

std::string DeviceRootFileSystem::nativePath(const host::Text& devicePath) {
  // The native path is resolved here, lexically, because the host's own
  // resolution would let "/.." leave the root: the simulator runs as root, and
  // a path built from a hostile sender's address would then write anywhere.
  const std::string path = host::toUtf8(devicePath);
  const DeviceRoot* root = deviceRoot();
  if (root == nullptr) {
    const std::string rel = DeviceRoot::relative(path);
    return root_ + "/" + rel;  // nothing exists under a root that does not
  }
  if (DeviceRoot::relative(path).empty()) return root->joined(path);
  try {
    return root->fileForSqlite(path);
  } catch (const DeviceFileError& e) {
    return e.missing() ? root->joined(path) : ":memory:";
  }
}

bool DeviceRootFileSystem::fileExists(const host::Text& devicePath) {
  const DeviceRoot* root = deviceRoot();
  if (!usable(devicePath) || root == nullptr) return false;
  std::string name;
  Fd dir = root->openParent(host::toUtf8(devicePath), &name);
  if (name.empty()) return true;  // the root itself
  struct stat st {};
  return dir && ::fstatat(dir.get(), name.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISLNK(st.st_mode);
}

bool DeviceRootFileSystem::removeItem(const host::Text& devicePath) {
  const DeviceRoot* root = deviceRoot();
  if (!usable(devicePath) || root == nullptr) return false;
  try {
    return root->removeAll(host::toUtf8(devicePath));
  } catch (const DeviceFileError&) {
    return false;
  }
}

bool DeviceRootFileSystem::createDirectory(const host::Text& devicePath) {
  const DeviceRoot* root = deviceRoot();
  if (!usable(devicePath) || root == nullptr) return false;
  try {
    root->makeDirectories(host::toUtf8(devicePath));
    return true;
  } catch (const DeviceFileError&) {
    return false;
  }
}

bool DeviceRootFileSystem::copyItem(const host::Text& fromDevicePath,
                                    const host::Text& toDevicePath) {
  const DeviceRoot* root = deviceRoot();
  if (!usable(fromDevicePath) || !usable(toDevicePath) || root == nullptr) return false;
  try {
    // The template database is a few kilobytes; a file far larger is none.
    std::string bytes = root->readRegularFile(host::toUtf8(fromDevicePath), kMaxSettingsFileBytes);
    return root->createExclusive(host::toUtf8(toDevicePath), bytes);  // never overwrites
  } catch (const DeviceFileError&) {
    return false;
  }
}

bool DeviceRootFileSystem::writeAtomically(const host::Text& devicePath,
                                           const host::Bytes& bytes) {
  const DeviceRoot* root = deviceRoot();
  if (!usable(devicePath) || root == nullptr) return false;
  try {
    root->writeAtomically(host::toUtf8(devicePath),
                          std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    return true;
  } catch (const DeviceFileError&) {
    return false;  // the platform's write reports failure by its result only
  }
}

std::optional<host::Dict> DeviceRootFileSystem::dictionaryWithContentsOfFile(
    const host::Text& devicePath) {
  const DeviceRoot* root = deviceRoot();
  if (!usable(devicePath) || root == nullptr) return std::nullopt;
  try {
    return plistDictionaryFromBytes(root->readRegularFile(host::toUtf8(devicePath), kMaxSettingsFileBytes));
  } catch (const DeviceFileError&) {
    return std::nullopt;
  }
}

std::optional<std::vector<host::Text>> DeviceRootFileSystem::contentsOfDirectory(
    const host::Text& devicePath) {
  const DeviceRoot* root = deviceRoot();
  if (!usable(devicePath) || root == nullptr) return std::nullopt;
  try {
    std::vector<host::Text> names;
    for (const std::string& name : root->list(host::toUtf8(devicePath))) names.push_back(host::fromUtf8(name));
    return names;
  } catch (const DeviceFileError&) {
    return std::nullopt;
  }
}

}  // namespace hushwall::linux_platform
