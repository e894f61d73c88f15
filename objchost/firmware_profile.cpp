#include "objchost/firmware_profile.h"

#include <regex>
#include <stdexcept>

namespace hushwall::objchost {

std::string springBoardProfileFor(const std::string& firmware) {
  static const std::regex kVersion("([0-9]{1,2})\\.([0-9]{1,2})(\\.[0-9]{1,2})?");
  std::smatch parts;
  const bool version = std::regex_match(firmware, parts, kVersion);
  const int major = version ? std::stoi(parts[1]) : 0, minor = version ? std::stoi(parts[2]) : 0;
  if (!version || major < 7 || major > 8 || (major == 8 && minor > 4)) {
    throw std::invalid_argument("firmware '" + firmware + "' is not one the package runs on (7.0 to 8.4)");
  }
  // One SpringBoard stands in for the whole range so far.
  return "iOS 7.0-8.4";
}

std::vector<std::string> firmwarePerProfile() { return {kNewestFirmware}; }

}  // namespace hushwall::objchost
