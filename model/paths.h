// Where Hushwall keeps its data on the device.
#ifndef HUSHWALL_MODEL_PATHS_H_
#define HUSHWALL_MODEL_PATHS_H_

#include "host/text.h"

namespace hushwall {

// The data directory: the database and one folder of saved pictures per number.
inline constexpr char kDataDirectory[] = "/var/mobile/Library/Preferences/Hushwall";
// Appended to the data directory as a path component.
inline constexpr char kDatabaseComponent[] = "/HSWL.db";
// The settings bundle, which ships the empty template database.
inline constexpr char kSettingsBundlePath[] = "/Library/PreferenceBundles/HushwallSettings.bundle";

// The data directory joined with "/HSWL.db", built afresh at every use.
host::Text databasePath();

}  // namespace hushwall

#endif  // HUSHWALL_MODEL_PATHS_H_
