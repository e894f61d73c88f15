// Dates as the user's locale writes them, for the command line's tables.
#ifndef HUSHWALL_TOOLS_LOCALE_DATE_H_
#define HUSHWALL_TOOLS_LOCALE_DATE_H_

#include <string>

namespace hushwall::tools {

// Seconds since 1970 as the local date and time in the locale of the
// environment (LC_ALL, LC_TIME, LANG), or the C locale when that is unknown.
std::string localeDate(double secondsSince1970);

}  // namespace hushwall::tools

#endif  // HUSHWALL_TOOLS_LOCALE_DATE_H_
