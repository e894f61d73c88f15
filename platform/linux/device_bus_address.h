// Where a simulated device's own message bus listens. Every process of one
// device reaches the bus through a socket under the device root, so two
// devices on one machine never hear each other's notifications.
#ifndef HUSHWALL_PLATFORM_LINUX_DEVICE_BUS_ADDRESS_H_
#define HUSHWALL_PLATFORM_LINUX_DEVICE_BUS_ADDRESS_H_

#include <string>

namespace hushwall::linux_platform {

// "<root>/var/run/hushwall/bus.sock". Throws std::invalid_argument when the
// path does not fit a unix socket address (at most 107 bytes).
std::string deviceBusSocketPath(const std::string& deviceRootNativePath);

// "unix:path=<socket>", with the path escaped as D-Bus addresses require.
std::string deviceBusAddress(const std::string& deviceRootNativePath);

// True when something accepts connections on the device's bus socket, i.e.
// the device has been started. Connecting is the only reliable test: a socket
// file left behind by a daemon that died stays on disk. Throws like
// deviceBusSocketPath for a root too long for the socket, and DeviceFileError
// when the socket or a folder on its way is a link.
bool deviceBusIsRunning(const std::string& deviceRootNativePath);

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_DEVICE_BUS_ADDRESS_H_
