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
// The person holding `phoneNumber`, or NULL. The last two arguments are
// the device's and have no meaning here.
ABRecordRef ABCFindPersonMatchingPhoneNumber(ABAddressBookRef addressBook, CFStringRef phoneNumber,
                                             int identifier, int uid);

#ifdef __cplusplus
}
#endif

#endif  // HUSHWALL_GNUSTEP_ADDRESSBOOK_H_
