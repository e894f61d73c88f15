#include "tools/command_line_checks.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "host/text.h"

namespace hushwall::tools {

void requireUtf8Arguments(int argc, const char* const* argv) {
  for (int i = 1; i < argc; ++i) {
    if (!host::isValidUtf8(argv[i])) {
      throw std::invalid_argument("argument " + std::to_string(i) + " '" + host::repairUtf8(argv[i]) +
                                  "' is not valid UTF-8 (bad bytes shown as U+FFFD)");
    }
  }
}

std::optional<std::int64_t> decimalNumber(const std::string& word, std::int64_t least, std::int64_t most) {
  if (word.empty() || word.size() > 19 || word.find_first_not_of("0123456789") != std::string::npos ||
      (word[0] == '0' && word.size() > 1)) {
    return std::nullopt;
  }
  std::uint64_t value = 0;  // 19 digits fit
  for (char digit : word) value = value * 10 + static_cast<std::uint64_t>(digit - '0');
  if (value > static_cast<std::uint64_t>(INT64_MAX)) return std::nullopt;
  const auto number = static_cast<std::int64_t>(value);
  if (number < least || number > most) return std::nullopt;
  return number;
}

std::string decimalNumberError(const std::string& word, std::int64_t least, std::int64_t most) {
  if (decimalNumber(word, least, most)) return std::string();
  return "must be a whole number from " + std::to_string(least) + " to " + std::to_string(most) +
         " in decimal, without sign or leading zeros, got '" + host::repairUtf8(word) + "'";
}

std::string watchCountError(const std::string& word) { return decimalNumberError(word, 0, kMaxWatchCount); }

std::string rowIdError(const std::string& word) { return decimalNumberError(word, 1, kMaxRowId); }

std::string watchTimeoutError(const std::string& word) {
  const std::string error = "must be a number of seconds from 0 to " +
                            std::to_string(static_cast<long long>(kMaxWatchTimeout)) + ", got '" +
                            host::repairUtf8(word) + "'";
  // Decimal only: strtod would also read "nan", "inf", hexadecimal and
  // leading blanks, which the option's own conversion may read otherwise.
  if (word.empty() || word.find_first_not_of("0123456789.eE+-") != std::string::npos ||
      !(std::isdigit(static_cast<unsigned char>(word[0])) || word[0] == '.')) {
    return error;
  }
  char* end = nullptr;
  errno = 0;
  const double seconds = std::strtod(word.c_str(), &end);
  if (*end != '\0' || errno == ERANGE || !std::isfinite(seconds) || seconds < 0 ||
      seconds > kMaxWatchTimeout) {
    return error;
  }
  return std::string();
}

}  // namespace hushwall::tools
