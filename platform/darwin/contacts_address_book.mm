#include <AddressBook/AddressBook.h>

#include "platform/darwin/device_services.h"
#include "platform/darwin/objc_values.h"

// Not in the SDK's headers.
extern "C" ABRecordRef ABCFindPersonMatchingPhoneNumber(ABAddressBookRef addressBook,
                                                        CFStringRef phoneNumber, int identifier,
                                                        int uid);

namespace hushwall::darwin {

bool ContactsAddressBook::hasPersonMatchingPhoneNumber(const host::OptText& number) {
  if (!number) return false;
  // A new book for every lookup, and neither it nor the person is released:
  // the lookup has always been made so, and it runs rarely (contacts-only).
  ABAddressBookRef book = ABAddressBookCreate();
  return ABCFindPersonMatchingPhoneNumber(book, (CFStringRef)stringOf(*number), 0, 0) != nullptr;
}

}  // namespace hushwall::darwin
