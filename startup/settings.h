// The user's settings: flags read by the hooks at every call, loaded from the
// property list that the settings bundle writes.
#ifndef HUSHWALL_STARTUP_SETTINGS_H_
#define HUSHWALL_STARTUP_SETTINGS_H_

#include <memory>

#include "host/value.h"

namespace hushwall {

// The settings file. The library only ever reads it.
inline constexpr char kSettingsFilePath[] = "/var/mobile/Library/Preferences/com.Corvanta.HushwallSettings.plist";

// Process-wide flags, written only by SettingsChanged and read directly by
// the hooks, without a lock. Their defaults are deliberately uneven: with no
// settings file the tweak is off, yet history and the purge are on, so that
// switching on with an old file keeps the user's earlier choice. A flag whose
// key is missing from the file keeps its previous value.
extern bool settings_Enabled;            // "Enabled", default false
extern bool settings_SaveHistory;        // "SaveHistory", default true
extern bool settings_ShowStatusBarIcon;  // "ShowStatusbarIcon" (small b), default false
extern bool settings_Vibrate;            // "Vibrate", default false
extern bool settings_ContactsOnly;       // "ContactsOnly", default false
extern bool settings_DeleteMessages;     // "DeleteMessages", default true
extern bool settings_ActionButton;       // "ActionButton", default false

// The whole settings file as last read (an empty dictionary when it could not
// be read); null before the first reload.
extern std::unique_ptr<host::Dict> settingsDictionary;

// Reloads the settings file and updates every flag whose key it holds.
// Observer of "com.Corvanta.HushwallSettings.settingsChanged"; also called
// once at the end of start-up.
void SettingsChanged();

}  // namespace hushwall

#endif  // HUSHWALL_STARTUP_SETTINGS_H_
