// The user's address book on Linux: a vCard file whose TEL properties are the
// contacts' phone numbers, compared the way the phone compares numbers
// (libphonenumber's number matching) rather than as plain text.
#ifndef HUSHWALL_PLATFORM_LINUX_VCARD_ADDRESS_BOOK_H_
#define HUSHWALL_PLATFORM_LINUX_VCARD_ADDRESS_BOOK_H_

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/address_book.h"
#include "platform/linux/device_root_file_system.h"

namespace hushwall::linux_platform {

// Where the simulated device keeps its contacts.
inline constexpr char kContactsVCardPath[] = "/var/mobile/Library/AddressBook/Contacts.vcf";

class VCardAddressBook : public host::AddressBook {
 public:
  // `devicePath` need not exist yet: a missing file is an empty address book,
  // and so is anything but a regular file of at most kMaxContactsFileBytes
  // reached without a link.
  VCardAddressBook(DeviceRootFileSystem& files, std::string devicePath);

  // Sees the file as it is at every call, as the device opens a new address
  // book for every lookup, so contacts edited in between are seen; the file
  // is read again only when it changed (another file, size or time), not
  // at every lookup. A number matches a stored one when libphonenumber calls
  // them the same number (exact, same national number, or one national
  // number a suffix of the other); an absent number, or one it cannot read
  // as a number, matches none.
  bool hasPersonMatchingPhoneNumber(const host::OptText& number) override;

 private:
  struct Version {
    dev_t device;
    ino_t inode;
    off_t size;
    std::int64_t seconds, nanoseconds;
    bool operator==(const Version& o) const {
      return device == o.device && inode == o.inode && size == o.size && seconds == o.seconds &&
             nanoseconds == o.nanoseconds;
    }
  };
  const std::vector<std::string>& storedNumbers();

  DeviceRootFileSystem& files_;
  std::string path_;
  std::optional<Version> version_;
  std::vector<std::string> numbers_;
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
