#include "platform/gnustep/stand_in_device.h"

#import <Foundation/Foundation.h>

#include <memory>
#include <stdexcept>

#include "platform/darwin/device_paths.h"
#include "platform/gnustep/stand_in_state.h"
#include "platform/linux/dbus_notify_center.h"
#include "platform/linux/device_bus_address.h"

namespace hushwall::gnustep {
namespace {

std::string& bootedRoot() {
  static std::string* root = new std::string;
  return *root;
}

}  // namespace

StandInState& standInState() {
  // Never destroyed: the tweak may still post while the process exits.
  static StandInState* state = new StandInState;
  return *state;
}

void bootDevice(const std::string& root) {
  if (!bootedRoot().empty()) throw std::logic_error("the stand-in device is already booted");
  if (root.empty()) throw std::invalid_argument("a device root is needed");
  bootedRoot() = root;
  standInState().carrier = std::make_unique<linux_platform::DBusNotifyCenter>(
      linux_platform::deviceBusAddress(root));
}

const std::string& deviceRoot() {
  if (bootedRoot().empty()) throw std::logic_error("the stand-in device is not booted");
  return bootedRoot();
}

bool deviceBooted() { return !bootedRoot().empty(); }

linux_platform::DBusNotifyCenter& darwinNotifyCarrier() {
  if (!standInState().carrier) throw std::logic_error("the stand-in device is not booted");
  return *standInState().carrier;
}

const std::vector<std::uint32_t>& playedSystemSounds() { return standInState().sounds; }
const std::vector<std::string>& statusBarRequests() { return standInState().statusBar; }
const std::vector<ShownAlert>& shownAlerts() { return standInState().alerts; }

}  // namespace hushwall::gnustep

// Device paths resolve under the booted root; a path outside it (the
// process's own home, say) is not on the device and stays as it is.
NSString* HWNativePath(NSString* devicePath) {
  if (devicePath == nil) return nil;
  NSString* root = [NSString stringWithUTF8String:hushwall::gnustep::deviceRoot().c_str()];
  return [root stringByAppendingString:devicePath];
}

NSString* HWDevicePath(NSString* nativePath) {
  if (nativePath == nil) return nil;
  NSString* root = [NSString stringWithUTF8String:hushwall::gnustep::deviceRoot().c_str()];
  if ([nativePath hasPrefix:root]) return [nativePath substringFromIndex:[root length]];
  return nativePath;
}
