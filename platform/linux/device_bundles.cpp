#include "platform/linux/device_bundles.h"

#include <filesystem>

namespace hushwall::linux_platform {

host::OptText DeviceBundles::bundlePath(const host::Text& devicePath) {
  std::error_code ec;
  if (!std::filesystem::is_directory(fs_.nativePath(devicePath), ec)) return std::nullopt;
  return devicePath;
}

host::Text documentsDirectoryOf(const host::OptText& identifier) {
  host::Text app = identifier ? *identifier : host::T("unidentified");
  return host::T("/var/mobile/Applications/") + app + host::T("/Documents");
}

host::OptText DeviceBundles::documentsDirectory() { return documentsDirectoryOf(identifier_); }

}  // namespace hushwall::linux_platform
