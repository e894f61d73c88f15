// Which SpringBoard the Objective-C device plays for a firmware version.
// The package runs on iOS 7.0 to 8.4 (device/control); SpringBoard's classes
// differ between generations of that range, and each generation the
// stand-in can play is one profile. Every version maps to a profile here,
// and only here.
#ifndef HUSHWALL_OBJCHOST_FIRMWARE_PROFILE_H_
#define HUSHWALL_OBJCHOST_FIRMWARE_PROFILE_H_

#include <string>
#include <vector>

namespace hushwall::objchost {

inline constexpr char kNewestFirmware[] = "8.4";

// The profile of SpringBoard on `firmware` ("7.1", "8.4", "8.1.2"). Throws
// std::invalid_argument naming the range for a version outside 7.0..8.4 or
// text that is no version.
std::string springBoardProfileFor(const std::string& firmware);

// One firmware version for each profile there is, newest first: what a
// test plays to cover every profile.
std::vector<std::string> firmwarePerProfile();

}  // namespace hushwall::objchost

#endif  // HUSHWALL_OBJCHOST_FIRMWARE_PROFILE_H_
