// The Linux stand-in for the device's operating system, under a real
// Objective-C runtime: what the Apple-only functions of the shim headers in
// include/ act on. A process boots it with the simulated device's root
// before the tweak is loaded, as the phone is running before any app starts;
// from then on device paths resolve under that root, Darwin notifications
// travel over that device's bus, and contacts come from its vCard file.
//
// What would reach the user's eyes or hand (sounds, status-bar images,
// alerts) is recorded here, and a test plays the user's taps back.
#ifndef HUSHWALL_PLATFORM_GNUSTEP_STAND_IN_DEVICE_H_
#define HUSHWALL_PLATFORM_GNUSTEP_STAND_IN_DEVICE_H_

#include <cstdint>
#include <string>
#include <vector>

namespace hushwall::linux_platform {
class DBusNotifyCenter;
}

namespace hushwall::gnustep {

// Boots the stand-in for the device whose root is `deviceRoot` (native
// path, bus running). Throws std::logic_error when booted twice.
void bootDevice(const std::string& deviceRoot);
// The root the process was booted with; throws std::logic_error before.
const std::string& deviceRoot();
bool deviceBooted();

// The carrier of the Darwin notify center in this process.
linux_platform::DBusNotifyCenter& darwinNotifyCarrier();

// AudioServicesPlaySystemSound calls, in order.
const std::vector<std::uint32_t>& playedSystemSounds();
// Status-bar requests in order: "add HSWL", "remove HSWL".
const std::vector<std::string>& statusBarRequests();

// A text field of an alert, as it was when the alert was shown.
struct ShownField {
  std::string placeholder;
  bool secure = false;  // typed text shown as dots
};

// An alert as shown with -[UIAlertView show].
struct ShownAlert {
  std::string title;
  std::string message;
  std::vector<std::string> buttons;  // index order: the cancel button first
  std::int64_t tag = 0;
  std::vector<ShownField> fields;  // by the alert's style: none, one or two
};
const std::vector<ShownAlert>& shownAlerts();
// The user taps button `index` on the alert shown last: its delegate is
// told alertView:clickedButtonAtIndex:, then alertView:didDismissWithButtonIndex:. Throws std::logic_error when no
// alert is on screen or the index is not one of its buttons.
void tapAlertButton(std::int64_t index);
// The user types `text` into text field `field` of the alert on screen
// (replacing what it held). Throws std::logic_error when no alert is on
// screen or it has no such field.
void typeIntoAlertField(std::int64_t field, const std::string& text);

}  // namespace hushwall::gnustep

#endif  // HUSHWALL_PLATFORM_GNUSTEP_STAND_IN_DEVICE_H_
