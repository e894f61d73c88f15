// What may stand on the blacklist as a number.
#ifndef HUSHWALL_COMPANION_PHONE_NUMBER_RULE_H_
#define HUSHWALL_COMPANION_PHONE_NUMBER_RULE_H_

#include <optional>
#include <string>

namespace hushwall::companion {

// Why `number` cannot be a blacklist entry, for the user; nothing when it can.
std::optional<std::string> phoneNumberProblem(const std::string& number);

}  // namespace hushwall::companion

#endif  // HUSHWALL_COMPANION_PHONE_NUMBER_RULE_H_
