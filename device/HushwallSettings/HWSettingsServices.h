// What the settings bundle's screens stand on: the device's files and its
// Darwin notify center behind host/, the user's locale for dates, and the
// history's change notification relayed to the screens.
#ifndef HUSHWALL_SETTINGS_HW_SETTINGS_SERVICES_H_
#define HUSHWALL_SETTINGS_HW_SETTINGS_SERVICES_H_

#import <Foundation/Foundation.h>

#include <string>

#include "companion/blacklist_editor.h"
#include "companion/history_list.h"

namespace hushwall::settings {

// The process's one file system and notify center, never released.
host::FileSystem& files();
host::NotifyCenter& notifications();

// Dates as the user's locale writes them: medium date, short time.
companion::DateFormat localeDateFormat();

// Posted on the default NSNotificationCenter each time the history changed
// (newMessagedAdded). A Darwin observer is never removed, so screens, which
// come and go, observe this instead.
extern NSString* const kHistoryChangedNotification;
// Relays newMessagedAdded to kHistoryChangedNotification; the first call
// starts it, later calls do nothing.
void relayHistoryChanges();

NSString* ns(const std::string& utf8);
// "" for nil.
std::string utf8(NSString* string);

}  // namespace hushwall::settings

#endif  // HUSHWALL_SETTINGS_HW_SETTINGS_SERVICES_H_
