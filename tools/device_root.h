// What makes a directory a simulated device's root.
//
// The programs that work on an existing device write under the root they are
// given, as the device's own processes would write under "/" on a phone. A
// directory that is not a device (a mistyped path, the machine's own "/")
// must be refused before anything is written there, so the device is
// recognised by what the simulator leaves in it: a marker file, made before
// anything else, or the data directory of a device made before the marker
// existed.
#ifndef HUSHWALL_TOOLS_DEVICE_ROOT_H_
#define HUSHWALL_TOOLS_DEVICE_ROOT_H_

#include <string>

namespace hushwall::tools {

// The marker, relative to the root. Outside every path the device's own
// processes use, so no process of the device ever sees it.
inline constexpr char kDeviceRootMarker[] = "/.hushwall-device";

// Writes the marker into `root`, which must exist. Throws std::runtime_error
// when it cannot.
void markDeviceRoot(const std::string& root);

// The canonical path of `given` when it is a device root. Throws
// std::invalid_argument, naming the path, when it does not exist, is not a
// directory, is "/" or holds neither the marker nor the data directory.
std::string existingDeviceRoot(const std::string& given);

// For the commands that lay out a new device: the canonical path of `given`
// after creating it, when it is missing or an empty directory; or, when
// `acceptDevice`, an existing device root. Throws std::invalid_argument for
// anything else (a file, a directory with other things in it, "/", a path
// too long for the device's bus socket), having made nothing.
std::string newDeviceRoot(const std::string& given, bool acceptDevice);

}  // namespace hushwall::tools

#endif  // HUSHWALL_TOOLS_DEVICE_ROOT_H_
