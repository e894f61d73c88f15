// The names of the system-wide notifications Hushwall posts and observes.
// Listeners outside the library match them letter for letter, so they stand
// exactly as written ("newMessagedAdded" included).
#ifndef HUSHWALL_STARTUP_NOTIFICATION_NAMES_H_
#define HUSHWALL_STARTUP_NOTIFICATION_NAMES_H_

namespace hushwall {

// Posted from outside when the settings file was rewritten; every process
// reloads the settings.
inline constexpr char kSettingsChangedNotification[] = "com.Corvanta.HushwallSettings.settingsChanged";
// Posted after the Blacklist table changed; every process, the poster
// included, reloads blacklistNumbers.
inline constexpr char kContactsChangedNotification[] = "com.Corvanta.HushwallSettings.contactsChanged";
// Posted by the messenger when it blocked a message; SpringBoard shows the icon.
inline constexpr char kAddStatusBarIconNotification[] = "com.Corvanta.HushwallSettings.addStatusBarIcon";
// Posted from outside; SpringBoard hides the icon.
inline constexpr char kRemoveStatusBarIconNotification[] = "com.Corvanta.HushwallSettings.removeStatusBarIcon";
// Posted by the history writers for listeners outside the library.
inline constexpr char kNewMessagedAddedNotification[] = "com.Corvanta.HushwallSettings.newMessagedAdded";

}  // namespace hushwall

#endif  // HUSHWALL_STARTUP_NOTIFICATION_NAMES_H_
