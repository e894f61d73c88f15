#include "platform/linux/linux_device.h"

namespace hushwall::linux_platform {

LinuxDevice::LinuxDevice(const std::string& deviceRoot, host::OptText bundleIdentifier)
    : fileSystem_(deviceRoot),
      notifyCenter_(deviceBusAddress(deviceRoot)),
      addressBook_(fileSystem_, kContactsVCardPath),
      bundles_(fileSystem_, std::move(bundleIdentifier)) {
  env_.fileSystem = &fileSystem_;
  env_.notifyCenter = &notifyCenter_;
  env_.addressBook = &addressBook_;
  env_.systemSounds = &systemSounds_;
  env_.statusBar = &statusBar_;
  env_.clock = &clock_;
  env_.bundles = &bundles_;
  env_.runtime = &runtime_;
  env_.alerts = &alerts_;
}

}  // namespace hushwall::linux_platform
