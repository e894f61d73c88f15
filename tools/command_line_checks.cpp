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

std::string watchCountError(const std::string& word) {
  const std::string error = "must be a whole number from 0 to " + std::to_string(kMaxWatchCount) +
                            ", got '" + host::repairUtf8(word) + "'";
  if (word.empty() || word.size() > 10 || word.find_first_not_of("0123456789") != std::string::npos) {
    return error;
  }
  return std::stoll(word) <= kMaxWatchCount ? std::string() : error;
}

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
