#include "tools/row_json.h"

#include <string>
#include <string_view>

#include "host/text.h"

namespace hushwall::tools {

nlohmann::json rowAsJson(sqlite3_stmt* statement) {
  nlohmann::json row = nlohmann::json::object();
  for (int i = 0; i < sqlite3_column_count(statement); ++i) {
    const char* rawName = sqlite3_column_name(statement, i);
    const std::string name = host::repairUtf8(rawName ? rawName : "");
    switch (sqlite3_column_type(statement, i)) {
      case SQLITE_NULL: row[name] = nullptr; break;
      case SQLITE_INTEGER: row[name] = sqlite3_column_int64(statement, i); break;
      case SQLITE_FLOAT: row[name] = sqlite3_column_double(statement, i); break;
      default: {
        // The pointer first, then the length, as SQLite asks: the length
        // belongs to the text form the pointer was converted to.
        const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, i));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, i));
        row[name] = host::repairUtf8(bytes ? std::string_view(bytes, size) : std::string_view());
      }
    }
  }
  return row;
}

}  // namespace hushwall::tools
