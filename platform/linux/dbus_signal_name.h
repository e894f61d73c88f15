// How a notification name travels on the device's bus: its last word is the
// signal's member, the rest its interface ("com.Corvanta.HushwallSettings.
// settingsChanged" is member "settingsChanged" of interface
// "com.Corvanta.HushwallSettings"). A name that does not split so into valid
// D-Bus names cannot be posted or observed.
#ifndef HUSHWALL_PLATFORM_LINUX_DBUS_SIGNAL_NAME_H_
#define HUSHWALL_PLATFORM_LINUX_DBUS_SIGNAL_NAME_H_

#include <string>

namespace hushwall::linux_platform {

struct SignalName {
  std::string interface;
  std::string member;
};

// Throws std::invalid_argument, naming the notification name, for one that
// is not "<interface>.<member>" in D-Bus terms (e.g. one without a dot).
SignalName signalNameOf(const std::string& notificationName);

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_DBUS_SIGNAL_NAME_H_
