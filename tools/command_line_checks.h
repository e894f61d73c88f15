// The checks the companion makes on its command line before it touches the
// device, apart from the program so that a fuzz target can call them.
//
// Each refuses with std::invalid_argument and a message that names the word,
// or (for the CLI11 validators) returns that message, empty when the word is
// good. A refused word means nothing was changed.
#ifndef HUSHWALL_TOOLS_COMMAND_LINE_CHECKS_H_
#define HUSHWALL_TOOLS_COMMAND_LINE_CHECKS_H_

#include <cstdint>
#include <optional>
#include <string>

namespace hushwall::tools {

// Every argument after the program's name must be UTF-8: the words end up
// in the database, the settings file and JSON output, and each of them needs
// text. The message shows the word with its bad bytes replaced.
void requireUtf8Arguments(int argc, const char* const* argv);

// Every count and row id the tools take: decimal digits only, no sign, no
// blank, no leading zero (so "010" is not read as octal, "0x10" not as
// hexadecimal), from `least` to `most`; anything else, a number past `most`
// included, is refused rather than capped. The value, or nothing.
std::optional<std::int64_t> decimalNumber(const std::string& word, std::int64_t least, std::int64_t most);
std::string decimalNumberError(const std::string& word, std::int64_t least, std::int64_t most);

// `watch --count`: a whole number from 0 to kMaxWatchCount.
inline constexpr int kMaxWatchCount = 2147483647;
std::string watchCountError(const std::string& word);

// `history delete ID`: a History row id, which SQLite hands out from 1 up.
inline constexpr std::int64_t kMaxRowId = INT64_MAX;
std::string rowIdError(const std::string& word);

// `watch --timeout`: seconds from 0 to kMaxWatchTimeout, in decimal (a
// fraction and an exponent allowed). NaN and infinities are refused: the
// wait is converted to whole milliseconds, which they have none of.
inline constexpr double kMaxWatchTimeout = 31536000.0;  // a year
std::string watchTimeoutError(const std::string& word);

}  // namespace hushwall::tools

#endif  // HUSHWALL_TOOLS_COMMAND_LINE_CHECKS_H_
