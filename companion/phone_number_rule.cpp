#include "companion/phone_number_rule.h"

#include "host/text.h"

namespace hushwall::companion {

// An entry covers every number that contains it, exactly as written, so
// anything but a number's own characters would make an entry that never
// matches, and one without a digit would match far too much.
std::optional<std::string> phoneNumberProblem(const std::string& number) {
  const std::string allowed = "0123456789+ -()./";
  if (number.empty() || number.find_first_not_of(allowed) != std::string::npos ||
      number.find_first_of("0123456789") == std::string::npos) {
    // The word is shown back to the user, who may have typed any bytes.
    return "malformed phone number '" + host::repairUtf8(number) +
           "': use digits, with '+', spaces, '-', '(', ')', '.' or '/'";
  }
  return std::nullopt;
}

}  // namespace hushwall::companion
