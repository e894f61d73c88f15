#include "testing/temp_device_root.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace hushwall::testing {
namespace fs = std::filesystem;

TempDeviceRoot::TempDeviceRoot() {
  // Short paths: the device's bus socket lives under the root and unix
  // socket paths are limited to about a hundred bytes.
  std::string pattern = "/tmp/hwroot-XXXXXX";
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TempDeviceRoot::~TempDeviceRoot() {
  std::error_code ec;
  fs::remove_all(path_, ec);
}

std::string TempDeviceRoot::databaseFile() const {
  return native("/var/mobile/Library/Preferences/Hushwall/HSWL.db");
}

void TempDeviceRoot::installDatabase() const {
  fs::create_directories(native("/var/mobile/Library/Preferences/Hushwall"));
  fs::copy_file(HUSHWALL_TEMPLATE_DB, databaseFile(), fs::copy_options::overwrite_existing);
}

void TempDeviceRoot::installSettingsBundle() const {
  std::string bundle = native("/Library/PreferenceBundles/HushwallSettings.bundle");
  fs::create_directories(bundle);
  fs::copy_file(HUSHWALL_TEMPLATE_DB, bundle + "/HSWL.db", fs::copy_options::overwrite_existing);
}

}  // namespace hushwall::testing
