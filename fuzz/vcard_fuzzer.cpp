// The address book's vCard reader over arbitrary bytes. Every number it
// finds is one trimmed line's value: no line feed, no blank or tab at either
// end. Numbers that the writer takes (no line break) come back from the
// writer's file exactly as they were, in order.
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_check.h"
#include "platform/linux/vcard_address_book.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace hushwall::linux_platform;
  const std::vector<std::string> numbers =
      phoneNumbersInVCards(std::string_view(reinterpret_cast<const char*>(data), size));
  bool writable = true;
  for (const std::string& number : numbers) {
    HUSHWALL_FUZZ_CHECK(number.find('\n') == std::string::npos, "a number spans two lines");
    HUSHWALL_FUZZ_CHECK(number.empty() || (number.front() != ' ' && number.front() != '\t' &&
                                           number.back() != ' ' && number.back() != '\t'),
                        "a number was not trimmed");
    writable = writable && number.find('\r') == std::string::npos;
  }
  if (!writable) {
    bool refused = false;
    try {
      contactsVCardText(numbers);
    } catch (const std::invalid_argument&) {
      refused = true;
    }
    HUSHWALL_FUZZ_CHECK(refused, "the writer took a number holding a line break");
    return 0;
  }
  HUSHWALL_FUZZ_CHECK(phoneNumbersInVCards(contactsVCardText(numbers)) == numbers,
                      "numbers did not survive the writer and the reader");
  return 0;
}
