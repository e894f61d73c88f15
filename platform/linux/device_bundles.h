// Bundles on the simulated device: the host process says which app it is;
// bundles are folders under the device root.
#ifndef HUSHWALL_PLATFORM_LINUX_DEVICE_BUNDLES_H_
#define HUSHWALL_PLATFORM_LINUX_DEVICE_BUNDLES_H_

#include "host/bundle.h"
#include "host/file_system.h"

namespace hushwall::linux_platform {

// Where the simulated device keeps an app's container, as the phone does
// under a generated name: "/var/mobile/Applications/<identifier>/Documents",
// "unidentified" standing in for an absent identifier.
host::Text documentsDirectoryOf(const host::OptText& identifier);

class DeviceBundles : public host::Bundles {
 public:
  // `identifier` absent: a process whose main bundle has no identifier.
  DeviceBundles(host::FileSystem& fs, host::OptText identifier)
      : fs_(fs), identifier_(std::move(identifier)) {}

  host::OptText mainBundleIdentifier() override { return identifier_; }
  host::OptText bundlePath(const host::Text& devicePath) override;
  // documentsDirectoryOf() this app: each app its own.
  host::OptText documentsDirectory() override;

 private:
  host::FileSystem& fs_;
  host::OptText identifier_;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_DEVICE_BUNDLES_H_
