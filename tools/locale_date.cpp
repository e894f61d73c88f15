#include "tools/locale_date.h"

#include <cmath>
#include <ctime>
#include <iomanip>
#include <locale>
#include <sstream>
#include <stdexcept>

namespace hushwall::tools {

std::string localeDate(double secondsSince1970) {
  const std::time_t time = static_cast<std::time_t>(std::floor(secondsSince1970));
  std::tm parts{};
  if (localtime_r(&time, &parts) == nullptr) return "";
  // Made once: building the environment's locale costs about 100 µs, more
  // than the rest of a history row.
  static const std::locale locale = [] {
    try {
      return std::locale("");
    } catch (const std::runtime_error&) {
      return std::locale::classic();  // named in the environment but not installed
    }
  }();
  std::ostringstream out;
  out.imbue(locale);
  out << std::put_time(&parts, "%x %X");
  return out.str();
}

}  // namespace hushwall::tools
