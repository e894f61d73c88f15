// The address book functions the device adapter uses. On Linux the book is
// the simulated device's vCard file, matched as the phone matches numbers.
#ifndef HUSHWALL_GNUSTEP_ADDRESSBOOK_H_
#define HUSHWALL_GNUSTEP_ADDRESSBOOK_H_

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef CFTypeRef ABAddressBookRef;
typedef CFTypeRef ABRecordRef;

// A new handle on the user's contacts, read afresh.
ABAddressBookRef ABAddressBookCreate(void);
// The person holding `phoneNumber` (a CFStringRef), or NULL. The last two
// arguments are the device's and have no meaning here. Declared with the
// very type the adapter calls it through once it is looked up at run time
// (platform/darwin/optional_symbols.h): a call through a pointer of
// another function type is undefined, and the sanitized build stops on it.
ABRecordRef ABCFindPersonMatchingPhoneNumber(ABAddressBookRef addressBook, CFTypeRef phoneNumber,
                                             int identifier, int uid);

#ifdef __cplusplus
}
#endif

#endif  // HUSHWALL_GNUSTEP_ADDRESSBOOK_H_
