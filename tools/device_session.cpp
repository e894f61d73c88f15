#include "tools/device_session.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "model/paths.h"
#include "platform/linux/device_bus_address.h"
#include "tools/device_root.h"

namespace hushwall::tools {
namespace fs = std::filesystem;

bool deviceBusIsRunning(const std::string& root) {
  const std::string socketPath = linux_platform::deviceBusSocketPath(root);
  int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, socketPath.c_str(), sizeof(address.sun_path) - 1);
  bool ok = ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
  ::close(fd);
  return ok;
}

DeviceSession::DeviceSession(const std::string& root) : root_(existingDeviceRoot(root)) {
  if (!deviceBusIsRunning(root_)) {
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
