#include "tools/device_session.h"

#include <chrono>
#include <filesystem>
#include <stdexcept>

#include "model/paths.h"
#include "platform/linux/device_bus_address.h"
#include "tools/device_root.h"

namespace hushwall::tools {
namespace fs = std::filesystem;

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
  auto copyTemplate = [&](const std::string& folder) {
    fs::create_directories(root + folder);
    fs::copy_file(templateDatabase, root + folder + kDatabaseComponent,
                  fs::copy_options::skip_existing);
  };
  copyTemplate(kSettingsBundlePath);
  copyTemplate(kDataDirectory);
}

}  // namespace hushwall::tools
