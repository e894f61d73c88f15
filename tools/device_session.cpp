#include "tools/device_session.h"

#include <chrono>
#include <fcntl.h>

#include <stdexcept>

#include "model/paths.h"
#include "platform/linux/device_bus_address.h"
#include "platform/linux/device_root.h"
#include "tools/device_root.h"

namespace hushwall::tools {

DeviceSession::DeviceSession(const std::string& root) : root_(existingDeviceRoot(root)) {
  if (!linux_platform::deviceBusIsRunning(root_)) {
    bus_ = std::make_unique<linux_platform::DeviceBus>(root_);
  }
  device_ = std::make_unique<linux_platform::LinuxDevice>(
      root_, host::T("com.Corvanta.HushwallModel"));
  previous_ = host::setEnv(&device_->env());
}

DeviceSession::~DeviceSession() {
  host::setEnv(previous_);
  device_.reset();
  bus_.reset();
}

void DeviceSession::runLoop() {
  device_->notifyCenter().runFor(std::chrono::milliseconds(100));
}

void seedDevice(const std::string& root, const std::string& templateDatabase) {
  markDeviceRoot(root);
  const linux_platform::DeviceRoot files(root);
  // The template is the build's own file; only the copies go into the root.
  const std::string bytes =
      linux_platform::readRegularFileAt(AT_FDCWD, templateDatabase, linux_platform::kMaxSettingsFileBytes);
  auto copyTemplate = [&](const std::string& folder) {
    files.makeDirectories(folder);
    files.createExclusive(folder + kDatabaseComponent, bytes);  // an existing one is kept
  };
  copyTemplate(kSettingsBundlePath);
  copyTemplate(kDataDirectory);
}

}  // namespace hushwall::tools
