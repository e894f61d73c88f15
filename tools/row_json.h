// One database row as JSON, for the tools that show the device's tables.
//
// The rows come from a file that other processes write, and any of them can
// store bytes that are not UTF-8 in a text column. JSON needs text, so such
// bytes are shown as U+FFFD (host::repairUtf8) instead of stopping the whole
// listing.
#ifndef HUSHWALL_TOOLS_ROW_JSON_H_
#define HUSHWALL_TOOLS_ROW_JSON_H_

#include <sqlite3.h>

#include <nlohmann/json.hpp>

namespace hushwall::tools {

// The current row of `statement` (after sqlite3_step answered SQLITE_ROW) as
// an object keyed by column name: NULL as null, integers and reals as
// numbers, text and blobs as text with every byte kept (NUL included) and bad
// sequences repaired. A later column of the same name wins.
nlohmann::json rowAsJson(sqlite3_stmt* statement);

}  // namespace hushwall::tools

#endif  // HUSHWALL_TOOLS_ROW_JSON_H_
