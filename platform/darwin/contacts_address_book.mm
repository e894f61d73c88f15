#include <AddressBook/AddressBook.h>

#include "platform/darwin/device_services.h"
#include "platform/darwin/objc_values.h"

namespace hushwall::darwin {

bool ContactsAddressBook::hasPersonMatchingPhoneNumber(const host::OptText& number) {
  if (!number || findPerson_ == nullptr) return false;
  // A new book for every lookup, and neither it nor the person is released:
  // the lookup has always been made so, and it runs rarely (contacts-only).
  // ABAddressBookCreate is deprecated since iOS 6 in favour of the
  // authorising variant, but this library runs inside SpringBoard and
  // WhatsApp, whose own access to the contacts is what the lookup uses;
  // there is no user to ask from in here, so the plain call stays.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"
  ABAddressBookRef book = ABAddressBookCreate();
#pragma clang diagnostic pop
  return findPerson_(book, (CFStringRef)stringOf(*number), 0, 0) != nullptr;
}

}  // namespace hushwall::darwin
