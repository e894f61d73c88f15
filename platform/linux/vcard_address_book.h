// The user's address book on Linux: a vCard file whose TEL properties are the
// contacts' phone numbers, compared the way the phone compares numbers
// (libphonenumber's number matching) rather than as plain text.
#ifndef HUSHWALL_PLATFORM_LINUX_VCARD_ADDRESS_BOOK_H_
#define HUSHWALL_PLATFORM_LINUX_VCARD_ADDRESS_BOOK_H_

#include <string>
#include <string_view>
#include <vector>

#include "host/address_book.h"

namespace hushwall::linux_platform {

// Where the simulated device keeps its contacts.
inline constexpr char kContactsVCardPath[] = "/var/mobile/Library/AddressBook/Contacts.vcf";

class VCardAddressBook : public host::AddressBook {
 public:
  // `nativePath` need not exist yet: a missing file is an empty address book.
  explicit VCardAddressBook(std::string nativePath);

  // Reads the file afresh on every call, as the device opens a new address
  // book for every lookup, so contacts edited in between are seen. A number
  // matches a stored one when libphonenumber calls them the same number
  // (exact, same national number, or one national number a suffix of the
  // other); an absent number, or one it cannot read as a number, matches none.
  bool hasPersonMatchingPhoneNumber(const host::OptText& number) override;

 private:
  std::string path_;
};

// The values of the TEL properties inside BEGIN:VCARD ... END:VCARD blocks, in
// file order. Accepts LF or CRLF line ends, folded lines, any parameters and
// a group prefix ("item1.TEL;type=CELL:+49 170 1234567").
std::vector<std::string> phoneNumbersInVCards(std::string_view text);

// One contact ("Contact 1", "Contact 2", ...) per number, as vCard text.
// Throws std::invalid_argument for a number holding a line break.
std::string contactsVCardText(const std::vector<std::string>& phoneNumbers);

// Writes contactsVCardText() atomically. Throws as it does, and
// std::runtime_error when the file cannot be written.
void writeContactsVCard(const std::string& nativePath, const std::vector<std::string>& phoneNumbers);

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_VCARD_ADDRESS_BOOK_H_
