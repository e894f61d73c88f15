// The address book over the simulated device's vCard file. Each
// ABAddressBookCreate is a new handle that reads the file afresh.
#include <AddressBook/AddressBook.h>

#import <Foundation/Foundation.h>

#include "host/text.h"
#include "platform/gnustep/stand_in_device.h"
#include "platform/linux/vcard_address_book.h"

@interface HWStandInAddressBook : NSObject
@end
@implementation HWStandInAddressBook
@end

@interface HWStandInPerson : NSObject
@end
@implementation HWStandInPerson
@end

extern "C" ABAddressBookRef ABAddressBookCreate(void) {
  return [[HWStandInAddressBook alloc] init];
}

extern "C" ABRecordRef ABCFindPersonMatchingPhoneNumber(ABAddressBookRef addressBook,
                                                        CFTypeRef phoneNumber, int, int) {
  if (addressBook == nullptr) return nullptr;
  NSString* number = (NSString*)phoneNumber;
  hushwall::host::OptText text;
  if (number != nil) text = hushwall::host::fromUtf8(std::string_view([number UTF8String]));
  hushwall::linux_platform::DeviceRootFileSystem files(hushwall::gnustep::deviceRoot());
  hushwall::linux_platform::VCardAddressBook book(files, hushwall::linux_platform::kContactsVCardPath);
  if (!book.hasPersonMatchingPhoneNumber(text)) return nullptr;
  // Like the device's Create rule: the caller owns the person.
  return [[HWStandInPerson alloc] init];
}
