#include "tools/device_root.h"

#include <filesystem>
#include <fcntl.h>
#include <sys/stat.h>

#include <stdexcept>

#include "model/paths.h"
#include "platform/linux/device_bus_address.h"
#include "platform/linux/device_root.h"

namespace hushwall::tools {
namespace fs = std::filesystem;

namespace {

// Neither is taken from the other side of a link.
bool isDevice(const std::string& canonicalRoot) {
  const linux_platform::DeviceRoot files(canonicalRoot);
  linux_platform::Fd marker = files.open(kDeviceRootMarker, O_PATH);
  struct stat st {};
  return (marker && ::fstat(marker.get(), &st) == 0 && S_ISREG(st.st_mode)) ||
         files.open(kDataDirectory, O_PATH | O_DIRECTORY);
}

std::string canonicalDirectory(const std::string& given) {
  std::error_code ec;
  if (!fs::exists(given, ec)) throw std::invalid_argument("device root '" + given + "' does not exist");
  if (!fs::is_directory(given, ec)) {
    throw std::invalid_argument("device root '" + given + "' is not a directory");
  }
  std::string root = fs::canonical(given, ec).string();
  if (ec) throw std::invalid_argument("device root '" + given + "': " + ec.message());
  // The machine's own "/" is never a simulated device, whatever it holds:
  // writing there would change the machine's files.
  if (root == "/") throw std::invalid_argument("device root '" + given + "' is the machine's own root");
  return root;
}

}  // namespace

void markDeviceRoot(const std::string& root) {
  linux_platform::DeviceRoot(root).writeAtomically(kDeviceRootMarker,
                                                   "a device root made by hushwall-sim or hushwall-model\n");
}

std::string existingDeviceRoot(const std::string& given) {
  std::string root = canonicalDirectory(given);
  if (!isDevice(root)) {
    throw std::invalid_argument("'" + given + "' is not a device root (it has neither " +
                                kDeviceRootMarker + " nor " + kDataDirectory +
                                "); give a root made by hushwall-sim or hushwall-model");
  }
  return root;
}

std::string newDeviceRoot(const std::string& given, bool acceptDevice) {
  std::error_code ec;
  // The device's bus socket lives under the root, and a unix socket's path
  // is short: a root too long for it is refused before anything is made,
  // rather than laid out and then refused (and so not empty for a retry).
  linux_platform::deviceBusSocketPath(fs::weakly_canonical(fs::absolute(given, ec), ec).string());
  if (!fs::exists(given, ec)) {
    if (!fs::create_directories(given, ec) && ec) {
      throw std::invalid_argument("cannot make the device root '" + given + "': " + ec.message());
    }
  }
  std::string root = canonicalDirectory(given);
  if (fs::is_empty(root, ec) && !ec) return root;
  if (acceptDevice && isDevice(root)) return root;
  throw std::invalid_argument("the device root '" + given + "' is not empty" +
                              (acceptDevice ? " and not a device root" : "") +
                              "; give a new or empty directory");
}

}  // namespace hushwall::tools
