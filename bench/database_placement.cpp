#include "bench/database_placement.h"

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>

#include "host/env.h"
#include "platform/linux/device_root.h"

namespace hushwall::bench {
namespace {
namespace fs = std::filesystem;

// tmpfs where there is one; a machine without /dev/shm measures disk twice,
// which the report's "memory" rows then show as no different.
std::string makeMemoryFolder() {
  std::string pattern = fs::is_directory("/dev/shm") ? "/dev/shm/hwbench-XXXXXX"
                                                     : "/tmp/hwbench-XXXXXX";
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  return pattern;
}

void replaceWithLink(const std::string& target, const std::string& nativePath) {
  fs::create_directories(fs::path(nativePath).parent_path());
  fs::remove(nativePath);
  fs::create_symlink(target, nativePath);
}

}  // namespace

PlacedDatabase::PlacedDatabase(const std::string& source, const std::string& nativePath,
                               Storage storage) {
  if (storage == Storage::kDisk) {
    fs::create_directories(fs::path(nativePath).parent_path());
    fs::copy_file(source, nativePath, fs::copy_options::overwrite_existing);
    file_ = nativePath;
    return;
  }
  memoryFolder_ = makeMemoryFolder();
  file_ = memoryFolder_ + "/" + fs::path(nativePath).filename().string();
  fs::copy_file(source, file_);
  replaceWithLink(file_, nativePath);
}

PlacedDatabase::~PlacedDatabase() {
  if (memoryFolder_.empty()) return;
  std::error_code ignored;
  fs::remove_all(memoryFolder_, ignored);
}

void linkDatabase(const std::string& cachedFile, const std::string& nativePath) {
  replaceWithLink(cachedFile, nativePath);
}

FollowingLinks::FollowingLinks(std::string nativeRoot)
    : root_(std::move(nativeRoot)), device_(host::env().fileSystem) {
  host::env().fileSystem = this;
}

FollowingLinks::~FollowingLinks() { host::env().fileSystem = device_; }

bool FollowingLinks::fileExists(const host::Text& devicePath) {
  std::error_code ec;
  return fs::exists(nativePath(devicePath), ec);
}

std::string FollowingLinks::nativePath(const host::Text& devicePath) {
  return root_ + "/" + linux_platform::DeviceRoot::relative(host::toUtf8(devicePath));
}

}  // namespace hushwall::bench
