// The user's address book, asked one question: does any contact hold this
// phone number (the device's ABCFindPersonMatchingPhoneNumber)?
#ifndef HUSHWALL_HOST_ADDRESS_BOOK_H_
#define HUSHWALL_HOST_ADDRESS_BOOK_H_

#include "host/text.h"

namespace hushwall::host {

class AddressBook {
 public:
  virtual ~AddressBook() = default;
  // True when some contact holds a number that matches `number`. An absent
  // number matches no contact.
  virtual bool hasPersonMatchingPhoneNumber(const OptText& number) = 0;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_ADDRESS_BOOK_H_
