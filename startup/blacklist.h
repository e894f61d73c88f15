// The in-memory blacklist: the phoneNumber column of the Blacklist table, so
// that the hooks can judge a sender without opening the database.
#ifndef HUSHWALL_STARTUP_BLACKLIST_H_
#define HUSHWALL_STARTUP_BLACKLIST_H_

#include <vector>

#include "host/text.h"

namespace hushwall {

// Null until the first ContactsChanged; from then on the same vector for the
// life of the process (a reader holding it sees every later reload). Entries
// are the stored texts, duplicates and all, in the order the query returned.
extern std::vector<host::Text>* blacklistNumbers;

// Reloads blacklistNumbers in full from the database. Observer of
// "com.Corvanta.HushwallSettings.contactsChanged"; also called once at the
// end of start-up, after SettingsChanged. A failed reload leaves the list
// empty, never stale.
void ContactsChanged();

}  // namespace hushwall

#endif  // HUSHWALL_STARTUP_BLACKLIST_H_
