// A command-line program's session on a simulated device: the device root,
// its bus (started for the session when it is not already running), and the
// platform of this process, installed as its Env.
#ifndef HUSHWALL_TOOLS_DEVICE_SESSION_H_
#define HUSHWALL_TOOLS_DEVICE_SESSION_H_

#include <memory>
#include <string>

#include "platform/linux/dbus_daemon.h"
#include "platform/linux/linux_device.h"

namespace hushwall::tools {

class DeviceSession {
 public:
  // Throws std::invalid_argument with a message for the user when the root is
  // not a device root (see tools/device_root.h): nothing is written then, not
  // even the bus's socket.
  explicit DeviceSession(const std::string& root);
  ~DeviceSession();

  const std::string& root() const { return root_; }
  linux_platform::LinuxDevice& device() { return *device_; }
  // Delivers whatever notifications have arrived (a short wait lets the bus
  // route this process's own posts back to it).
  void runLoop();

 private:
  std::string root_;
  std::unique_ptr<linux_platform::DeviceBus> bus_;  // null when already running
  std::unique_ptr<linux_platform::LinuxDevice> device_;
  host::Env* previous_ = nullptr;
};

// Lays out a fresh device root: the marker, the template database in the
// settings bundle and, as SpringBoard's first start would, in the data
// directory. `root` must exist.
void seedDevice(const std::string& root, const std::string& templateDatabase);

}  // namespace hushwall::tools

#endif  // HUSHWALL_TOOLS_DEVICE_SESSION_H_
