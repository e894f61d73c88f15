// Text from the database made fit for a screen or a terminal. Rows are
// written by several processes and may be damaged, so nothing read from them
// is trusted to be valid UTF-8 or of a sensible length.
#ifndef HUSHWALL_COMPANION_DISPLAY_TEXT_H_
#define HUSHWALL_COMPANION_DISPLAY_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace hushwall::companion {

// More than a table cell or a line ever shows; a message of megabytes would
// only stall the list.
inline constexpr std::size_t kDisplayCharacters = 500;

// The bytes as valid UTF-8: invalid sequences and NUL become U+FFFD, and
// text longer than `maxCharacters` characters is cut at a character boundary
// (never inside a surrogate pair or a UTF-8 sequence) and ends in U+2026.
// Counted in characters, for the phone's labels, which lay text out
// themselves; a terminal's columns are tools::cutToWidth's business, and its
// control characters tools::printable's.
std::string displayText(std::string_view bytes, std::size_t maxCharacters = kDisplayCharacters);

}  // namespace hushwall::companion

#endif  // HUSHWALL_COMPANION_DISPLAY_TEXT_H_
