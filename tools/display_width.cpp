#include "tools/display_width.h"

#include <algorithm>
#include <iterator>

#include "host/text.h"

namespace hushwall::tools {
namespace {

struct Span {
  char32_t first, last;
};

// Zero-width: combining marks, the zero-width space and joiners, variation
// selectors.
constexpr Span kZeroWidth[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A},
                               {0x064B, 0x065F}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F},
                               {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xE0100, 0xE01EF}};
// Two columns: East Asian wide and full-width blocks, and the emoji blocks.
constexpr Span kWide[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x33FF},
                          {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},
                          {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE4F},
                          {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},   {0x1F300, 0x1F64F},
                          {0x1F900, 0x1F9FF}, {0x20000, 0x2FFFD}, {0x30000, 0x3FFFD}};

template <std::size_t N>
bool within(char32_t c, const Span (&spans)[N]) {
  return std::any_of(std::begin(spans), std::end(spans),
                     [c](const Span& s) { return c >= s.first && c <= s.last; });
}

std::size_t columnsOf(char32_t c) {
  if (within(c, kZeroWidth)) return 0;
  return within(c, kWide) ? 2 : 1;
}

// The character starting at `i` of UTF-16 text, and how many units it takes.
char32_t characterAt(const host::Text& text, std::size_t i, std::size_t& units) {
  char32_t c = text[i];
  units = 1;
  if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
    units = 2;
    c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
  }
  return c;
}

}  // namespace

std::size_t displayWidth(std::string_view utf8) {
  const host::Text text = host::fromUtf8(utf8);
  std::size_t columns = 0;
  for (std::size_t i = 0, units = 0; i < text.size(); i += units) columns += columnsOf(characterAt(text, i, units));
  return columns;
}

std::string cutToWidth(std::string_view utf8, std::size_t columns) {
  const host::Text text = host::fromUtf8(utf8);
  std::size_t used = 0, end = 0;
  for (std::size_t units = 0; end < text.size(); end += units) {
    const std::size_t width = columnsOf(characterAt(text, end, units));
    if (used + width > columns) break;
    used += width;
  }
  return host::toUtf8(text.substr(0, end));
}

std::string printable(std::string_view utf8) {
  host::Text text = host::fromUtf8(utf8);
  for (char16_t& unit : text) {
    if (unit < 0x20 || (unit >= 0x7F && unit <= 0x9F)) unit = 0xFFFD;
  }
  return host::toUtf8(text);
}

}  // namespace hushwall::tools
