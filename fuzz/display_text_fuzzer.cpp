// Text from damaged database rows made fit to show: whatever the bytes, the
// result is valid UTF-8 without NUL, holds at most the limit of characters
// (plus the ellipsis), and is the input itself when that already was fit.
// The first input byte picks the limit.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "companion/display_text.h"
#include "fuzz/fuzz_check.h"
#include "host/text.h"

namespace {

std::size_t characters(const hushwall::host::Text& text) {
  std::size_t count = 0;
  for (char16_t unit : text) count += (unit >= 0xDC00 && unit <= 0xDFFF) ? 0 : 1;
  return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t limit = data[0] % 64;
  const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
  const std::string shown = hushwall::companion::displayText(bytes, limit);
  const hushwall::host::Text decoded = hushwall::host::fromUtf8(shown);
  HUSHWALL_FUZZ_CHECK(hushwall::host::toUtf8(decoded) == shown, "not valid UTF-8");
  HUSHWALL_FUZZ_CHECK(shown.find('\0') == std::string::npos, "a NUL is shown");
  HUSHWALL_FUZZ_CHECK(characters(decoded) <= limit + 1, "longer than the limit and its ellipsis");
  const hushwall::host::Text input = hushwall::host::fromUtf8(bytes);
  const bool fit = hushwall::host::toUtf8(input) == bytes && bytes.find('\0') == std::string_view::npos &&
                   characters(input) <= limit;
  if (fit) HUSHWALL_FUZZ_CHECK(shown == bytes, "text that was fit to show was changed");
  return 0;
}
