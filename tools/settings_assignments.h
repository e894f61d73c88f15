// The settings companion's side of the settings file: which keys it writes,
// how "KEY=VALUE" words from the command line become entries, and how the
// file's values are shown.
#ifndef HUSHWALL_TOOLS_SETTINGS_ASSIGNMENTS_H_
#define HUSHWALL_TOOLS_SETTINGS_ASSIGNMENTS_H_

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/value.h"

namespace hushwall::tools {

// The keys the companion writes, in the order the library reads them. The
// status-bar key is spelled with a small b, as the library looks it up.
const std::vector<std::string>& settingsKeys();

// Each "KEY=VALUE" as a boolean entry. KEY must be one of settingsKeys()
// exactly; VALUE is true/false, yes/no or 1/0 in any case. A key given twice
// keeps its last value. Throws std::invalid_argument naming the offending
// word, before anything is decided, so a bad word changes nothing.
host::Dict parseSettingsAssignments(const std::vector<std::string>& words);

// A settings value as JSON: booleans, numbers and strings as themselves,
// dates as seconds since 1970, bytes as their count, containers recursively.
nlohmann::json settingsValueToJson(const host::Value& value);

}  // namespace hushwall::tools

#endif  // HUSHWALL_TOOLS_SETTINGS_ASSIGNMENTS_H_
