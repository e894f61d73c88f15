#include "platform/linux/device_bundles.h"

#include <filesystem>

namespace hushwall::linux_platform {

host::OptText DeviceBundles::bundlePath(const host::Text& devicePath) {
  std::error_code ec;
  if (!std::filesystem::is_directory(fs_.nativePath(devicePath), ec)) return std::nullopt;
  return devicePath;
}

host::OptText DeviceBundles::documentsDirectory() {
  host::Text app = identifier_ ? *identifier_ : host::T("unidentified");
  return host::T("/var/mobile/Applications/") + app + host::T("/Documents");
}

}  // namespace hushwall::linux_platform
