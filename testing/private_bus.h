// A real message bus for a test: a dbus-daemon on a device root's bus
// socket, stopped when the test ends.
#ifndef HUSHWALL_TESTING_PRIVATE_BUS_H_
#define HUSHWALL_TESTING_PRIVATE_BUS_H_

#include <memory>
#include <string>

#include "platform/linux/dbus_daemon.h"
#include "testing/temp_device_root.h"

namespace hushwall::testing {

class PrivateBus {
 public:
  // On a device root of its own, removed afterwards.
  PrivateBus();
  // On the given device root, where deviceBusAddress() finds it.
  explicit PrivateBus(const std::string& deviceRootNativePath);
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  const std::string& address() const { return bus_.address(); }
  pid_t daemonPid() const { return bus_.pid(); }

 private:
  std::unique_ptr<TempDeviceRoot> ownRoot_;  // outlives the daemon
  linux_platform::DeviceBus bus_;
};

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_PRIVATE_BUS_H_
