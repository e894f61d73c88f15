#include "companion/display_text.h"

#include "host/text.h"

namespace hushwall::companion {

std::string displayText(std::string_view bytes, std::size_t maxCharacters) {
  // No character takes more than four bytes, and an invalid byte becomes one
  // character, so this many bytes always hold more than will be shown.
  const std::size_t enough = maxCharacters * 4 + 4;
  host::Text text = host::fromUtf8(bytes.substr(0, enough));
  std::size_t characters = 0, cut = text.size();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\0') text[i] = u'\uFFFD';
    const bool secondHalf = text[i] >= 0xDC00 && text[i] <= 0xDFFF && i > 0 &&
                            text[i - 1] >= 0xD800 && text[i - 1] <= 0xDBFF;
    if (secondHalf) continue;
    if (characters == maxCharacters) {
      cut = i;
      break;
    }
    ++characters;
  }
  const bool longer = cut < text.size() || bytes.size() > enough;
  text.resize(cut);
  if (longer) text += u'\u2026';
  return host::toUtf8(text);
}

}  // namespace hushwall::companion
