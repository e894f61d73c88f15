// A device's own message bus: a dbus-daemon listening on the device's bus
// socket, which carries the system-wide notifications between the device's
// processes.
#ifndef HUSHWALL_PLATFORM_LINUX_DBUS_DAEMON_H_
#define HUSHWALL_PLATFORM_LINUX_DBUS_DAEMON_H_

#include <sys/types.h>

#include <string>

#include "platform/linux/device_root.h"

namespace hushwall::linux_platform {

class DeviceBus {
 public:
  // Starts /usr/bin/dbus-daemon for the device root and returns once the bus
  // accepts connections. The daemon's config and log sit beside the socket.
  // The daemon ends when the calling thread does, even if this object is
  // never destroyed (the process killed): start it from the main thread.
  // Throws std::runtime_error when it does not start.
  explicit DeviceBus(const std::string& deviceRootNativePath);
  // Stops the daemon and waits for it.
  ~DeviceBus();
  DeviceBus(const DeviceBus&) = delete;
  DeviceBus& operator=(const DeviceBus&) = delete;

  // The address to connect to, as deviceBusAddress() gives it.
  const std::string& address() const { return address_; }
  pid_t pid() const { return pid_; }

 private:
  static constexpr char kBusFolder[] = "/var/run/hushwall";
  DeviceRoot root_;
  std::string socketPath_;
  std::string logPath_;
  std::string address_;
  pid_t pid_ = -1;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_DBUS_DAEMON_H_
