// One process's view of a simulated device: every platform service of the
// Env, wired to one device root and that device's bus.
#ifndef HUSHWALL_PLATFORM_LINUX_LINUX_DEVICE_H_
#define HUSHWALL_PLATFORM_LINUX_LINUX_DEVICE_H_

#include <string>

#include "host/env.h"
#include "platform/linux/dbus_notify_center.h"
#include "platform/linux/device_bundles.h"
#include "platform/linux/device_root_file_system.h"
#include "platform/linux/object_runtime.h"
#include "platform/linux/process_alerts.h"
#include "platform/linux/process_services.h"
#include "platform/linux/system_clock.h"
#include "platform/linux/vcard_address_book.h"

namespace hushwall::linux_platform {

class LinuxDevice {
 public:
  // Connects to the device's bus, which must be running (DeviceBus).
  // `bundleIdentifier` is the identity of the process on the device.
  LinuxDevice(const std::string& deviceRoot, host::OptText bundleIdentifier);

  host::Env& env() { return env_; }
  DeviceRootFileSystem& fileSystem() { return fileSystem_; }
  DBusNotifyCenter& notifyCenter() { return notifyCenter_; }
  ProcessSystemSounds& systemSounds() { return systemSounds_; }
  ProcessStatusBar& statusBar() { return statusBar_; }
  SystemClock& clock() { return clock_; }
  ObjectRuntime& runtime() { return runtime_; }
  ProcessAlerts& alerts() { return alerts_; }

 private:
  DeviceRootFileSystem fileSystem_;
  DBusNotifyCenter notifyCenter_;
  VCardAddressBook addressBook_;
  ProcessSystemSounds systemSounds_;
  ProcessStatusBar statusBar_;
  SystemClock clock_;
  DeviceBundles bundles_;
  ObjectRuntime runtime_;
  ProcessAlerts alerts_;
  host::Env env_;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_LINUX_DEVICE_H_
