// unformattedPhoneNumber over arbitrary UTF-16 (the input's bytes two at a
// time, little-endian): the eight formatting characters go, everything else
// stays in its order, lone surrogates included.
#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_check.h"
#include "model/hushwall.h"

namespace {

bool isFormatting(char16_t u) {
  switch (u) {
    case u'(': case u')': case u'-': case u'+': case u'.': case u'/': case 0x00A0: case u' ':
      return true;
    default:
      return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  hushwall::host::Text text;
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    text.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
  }
  hushwall::host::Text kept;
  for (char16_t u : text) {
    if (!isFormatting(u)) kept.push_back(u);
  }
  hushwall::host::OptText result = hushwall::Hushwall::sharedInstance()->unformattedPhoneNumber(text);
  HUSHWALL_FUZZ_CHECK(result.has_value(), "a present text gave an absent result");
  HUSHWALL_FUZZ_CHECK(*result == kept, "not exactly the formatting characters were removed");
  HUSHWALL_FUZZ_CHECK(!hushwall::Hushwall::sharedInstance()->unformattedPhoneNumber(std::nullopt),
                      "an absent text gave a present result");
  return 0;
}
