#include "platform/linux/vcard_address_book.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <sys/stat.h>

#include "testing/file_tree.h"
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
  for (const auto& [number, known] : std::vector<std::pair<std::string, bool>>{
           {"+49 170 1234567", true},  // exact
           {"+491701234567", true},    // exact once the blanks are gone
           {"0170-1234567", true},     // national form: same national number
           {"491701234567", true},     // no '+': read as a national number ending in the other
           {"1234567", true},          // a suffix of the national number
           {"+49 69 12345678", true},  // stored nationally, asked internationally
           {"+491701234568", false}, {"+441701234567", false},  // another country, same digits
           {"+4969123456789", false}, {"", false}, {"not a number", false}}) {
    EXPECT_EQ(knows(number), known) << number;
  }
  EXPECT_FALSE(book.hasPersonMatchingPhoneNumber(std::nullopt));
}

// Each lookup sees the file as it is now, if it is a regular file within its
// size limit; it is read again only when its size or time says it changed.
TEST_F(VCardAddressBookTest, EveryLookupSeesTheFileAsItIsNow) {
  EXPECT_FALSE(knows("+491701234567"));  // no file yet
  ASSERT_EQ(::mkfifo(file.c_str(), 0644), 0);
  EXPECT_FALSE(knows("+491701234567")) << "a FIFO reads as no file, at once";
  std::filesystem::remove(file);
  writeContactsVCard(file, {"+491701234567"});
  EXPECT_TRUE(knows("+491701234567"));
  std::filesystem::resize_file(file, kMaxContactsFileBytes + 1);
  EXPECT_FALSE(knows("+491701234567")) << "over the limit: no contacts";
  writeContactsVCard(file, {"+4915112345678"});
  EXPECT_FALSE(knows("+491701234567"));
  EXPECT_TRUE(knows("+4915112345678"));
  // The same size and time, another number written in place: still the
  // numbers read before, since nothing says the file changed.
  const auto time = std::filesystem::last_write_time(file);
  std::string text = testing::fileBytes(file);
  text.replace(text.find("+4915112345678"), 14, "+4915112345679");
  std::ofstream(file, std::ios::binary | std::ios::in | std::ios::out) << text;
  std::filesystem::last_write_time(file, time);
  EXPECT_TRUE(knows("+4915112345678"));
  std::filesystem::last_write_time(file, time + std::chrono::seconds(1));
  EXPECT_FALSE(knows("+4915112345678"));
  EXPECT_TRUE(knows("+4915112345679"));
  writeContactsVCard(file, {});
  EXPECT_FALSE(knows("+4915112345679"));
  std::filesystem::remove(file);
  EXPECT_FALSE(knows("+4915112345679"));
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
  EXPECT_EQ(phoneNumbersInVCards(testing::fileBytes(file)),
            (std::vector<std::string>{"+49 170 1234567", "+1 650 253 0000", "tel:+81-3-1234-5678"}));

  EXPECT_TRUE(knows("+491701234567"));
  EXPECT_TRUE(knows("+16502530000"));
  EXPECT_TRUE(knows("+81312345678"));
  EXPECT_FALSE(knows("+442079460000"));
  EXPECT_FALSE(knows("+33123456789"));
}

}  // namespace
}  // namespace hushwall::linux_platform
