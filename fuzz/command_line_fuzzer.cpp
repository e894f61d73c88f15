// The companion's checks of its command line over any words (the input split
// at NUL bytes, as the system hands arguments over). Each check may only
// refuse with std::invalid_argument or an error message, and what it accepts
// must be what it promises: UTF-8 arguments, phone numbers of a number's own
// characters with a digit, known settings keys with a boolean value, watch
// counts and timeouts within range, notification names with a dot.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "companion/phone_number_rule.h"
#include "fuzz/fuzz_check.h"
#include "host/text.h"
#include "platform/linux/dbus_notify_center.h"
#include "tools/command_line_checks.h"
#include "tools/settings_assignments.h"

namespace {

using namespace hushwall;

template <typename Check>
bool accepts(Check check) {
  try {
    check();
    return true;
  } catch (const std::invalid_argument&) {
    return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> words(1, "hushwallctl");
  words.emplace_back();
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == 0) words.emplace_back();
    else words.back().push_back(static_cast<char>(data[i]));
  }
  std::vector<const char*> argv;
  bool allUtf8 = true;
  for (const auto& word : words) {
    argv.push_back(word.c_str());
    allUtf8 = allUtf8 && host::isValidUtf8(word);
  }
  HUSHWALL_FUZZ_CHECK(accepts([&] { tools::requireUtf8Arguments(static_cast<int>(argv.size()), argv.data()); }) ==
                          allUtf8,
                      "the UTF-8 check disagrees with isValidUtf8");

  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (!companion::phoneNumberProblem(word)) {
      HUSHWALL_FUZZ_CHECK(word.find_first_not_of("0123456789+ -()./") == std::string::npos &&
                              word.find_first_of("0123456789") != std::string::npos,
                          "a phone number with other characters or no digit was accepted");
    }
    if (const std::optional<std::int64_t> id = tools::decimalNumber(word, 1, tools::kMaxRowId)) {
      HUSHWALL_FUZZ_CHECK(std::to_string(*id) == word, "a row id that is not its own decimal text was accepted");
    }
    if (tools::watchCountError(word).empty()) {
      HUSHWALL_FUZZ_CHECK(std::to_string(std::strtoll(word.c_str(), nullptr, 10)) == word &&
                              std::strtoll(word.c_str(), nullptr, 10) <= tools::kMaxWatchCount,
                          "a count out of range or not in plain decimal was accepted");
    }
    if (tools::watchTimeoutError(word).empty()) {
      const double seconds = std::strtod(word.c_str(), nullptr);
      HUSHWALL_FUZZ_CHECK(std::isfinite(seconds) && seconds >= 0 && seconds <= tools::kMaxWatchTimeout,
                          "a timeout out of range was accepted");
    }
    if (accepts([&] { linux_platform::checkNotificationName(word); })) {
      HUSHWALL_FUZZ_CHECK(word.find('.') != std::string::npos && host::isValidUtf8(word),
                          "a notification name without a dot or UTF-8 was accepted");
    }
  }

  host::Dict entries;
  const std::vector<std::string> assignments(words.begin() + 1, words.end());
  if (accepts([&] { entries = tools::parseSettingsAssignments(assignments); })) {
    const auto& keys = tools::settingsKeys();
    for (const auto& [key, value] : entries) {
      HUSHWALL_FUZZ_CHECK(std::find(keys.begin(), keys.end(), host::toUtf8(key)) != keys.end(),
                          "an unknown settings key was accepted");
      HUSHWALL_FUZZ_CHECK(value.kind() == host::Value::Kind::kBoolean, "a settings value is not a boolean");
    }
    HUSHWALL_FUZZ_CHECK(!entries.empty() || assignments.empty(), "words were accepted but nothing set");
  }
  return 0;
}
