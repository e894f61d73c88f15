#include "platform/linux/vcard_address_book.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "testing/temp_device_root.h"

namespace hushwall::linux_platform {
namespace {

using host::T;

class VCardAddressBookTest : public ::testing::Test {
 protected:
  bool knows(const std::string& number) { return book.hasPersonMatchingPhoneNumber(T(number)); }

  testing::TempDeviceRoot root;
  std::string file = root.path() + "/Contacts.vcf";
  DeviceRootFileSystem files{root.path()};
  VCardAddressBook book{files, "/Contacts.vcf"};
};

TEST_F(VCardAddressBookTest, MatchesANumberHoweverItIsWritten) {
  writeContactsVCard(file, {"+49 170 1234567", "06912345678"});
  EXPECT_TRUE(knows("+49 170 1234567"));  // exact
  EXPECT_TRUE(knows("+491701234567"));    // exact once the blanks are gone
  EXPECT_TRUE(knows("0170-1234567"));     // national form: same national number
  EXPECT_TRUE(knows("491701234567"));     // no '+': read as a national number ending in the other
  EXPECT_TRUE(knows("1234567"));          // a suffix of the national number
  EXPECT_TRUE(knows("+49 69 12345678"));  // stored nationally, asked internationally
  EXPECT_FALSE(knows("+491701234568"));
  EXPECT_FALSE(knows("+441701234567"));  // same digits, another country
  EXPECT_FALSE(knows("+4969123456789"));
  EXPECT_FALSE(knows(""));
  EXPECT_FALSE(knows("not a number"));
  EXPECT_FALSE(book.hasPersonMatchingPhoneNumber(std::nullopt));
}

TEST_F(VCardAddressBookTest, EveryLookupSeesTheFileAsItIsNow) {
  EXPECT_FALSE(knows("+491701234567"));  // no file yet
  writeContactsVCard(file, {"+491701234567"});
  EXPECT_TRUE(knows("+491701234567"));
  writeContactsVCard(file, {"+4915112345678"});
  EXPECT_FALSE(knows("+491701234567"));
  EXPECT_TRUE(knows("+4915112345678"));
  writeContactsVCard(file, {});
  EXPECT_FALSE(knows("+4915112345678"));
  std::filesystem::remove(file);
  EXPECT_FALSE(knows("+4915112345678"));
}

TEST_F(VCardAddressBookTest, ReadsVCardsAsOtherProgramsWriteThem) {
  std::ofstream(file, std::ios::binary)
      << "\xEF\xBB\xBF"
         "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Anna\r\n"
         "TEL;TYPE=CELL:+49 17\r\n 0 1234567\r\n"  // folded: the line break and one blank go
         "item1.TEL;type=\"voice,pref\":+1 650 253 0000\r\n"
         "item1.X-ABLabel:work\r\n"
         "NOTE:TEL:+33 1 23 45 67 89 is only a note\r\n"
         "END:VCARD\r\n"
         "TEL:+44 20 7946 0000\r\n"  // outside any card
         "begin:vcard\nversion:4.0\ntel;value=uri:tel:+81-3-1234-5678\nend:vcard\n";
  std::ifstream in(file, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(phoneNumbersInVCards(text),
            (std::vector<std::string>{"+49 170 1234567", "+1 650 253 0000", "tel:+81-3-1234-5678"}));

  EXPECT_TRUE(knows("+491701234567"));
  EXPECT_TRUE(knows("+16502530000"));
  EXPECT_TRUE(knows("+81312345678"));
  EXPECT_FALSE(knows("+442079460000"));
  EXPECT_FALSE(knows("+33123456789"));
}

}  // namespace
}  // namespace hushwall::linux_platform
