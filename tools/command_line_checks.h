// The checks the companion makes on its command line before it touches the
// device, apart from the program so that a fuzz target can call them.
//
// Each refuses with std::invalid_argument and a message that names the word,
// or (for the CLI11 validators) returns that message, empty when the word is
// good. A refused word means nothing was changed.
#ifndef HUSHWALL_TOOLS_COMMAND_LINE_CHECKS_H_
#define HUSHWALL_TOOLS_COMMAND_LINE_CHECKS_H_

#include <string>

namespace hushwall::tools {

// Every argument after the program's name must be UTF-8: the words end up
// in the database, the settings file and JSON output, and each of them needs
// text. The message shows the word with its bad bytes replaced.
void requireUtf8Arguments(int argc, const char* const* argv);

// `watch --count`: a whole number from 0 to kMaxWatchCount, in decimal.
inline constexpr int kMaxWatchCount = 2147483647;
std::string watchCountError(const std::string& word);

// `watch --timeout`: seconds from 0 to kMaxWatchTimeout, in decimal (a
// fraction and an exponent allowed). NaN and infinities are refused: the
// wait is converted to whole milliseconds, which they have none of.
inline constexpr double kMaxWatchTimeout = 31536000.0;  // a year
std::string watchTimeoutError(const std::string& word);

}  // namespace hushwall::tools

#endif  // HUSHWALL_TOOLS_COMMAND_LINE_CHECKS_H_
