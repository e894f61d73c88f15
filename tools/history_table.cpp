#include "tools/history_table.h"

#include <sqlite3.h>

#include <algorithm>
#include <iomanip>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace hushwall::tools {
namespace {

struct CloseDb { void operator()(sqlite3* db) const { sqlite3_close(db); } };
struct Finalize { void operator()(sqlite3_stmt* s) const { sqlite3_finalize(s); } };
using DbPtr = std::unique_ptr<sqlite3, CloseDb>;
using StmtPtr = std::unique_ptr<sqlite3_stmt, Finalize>;

DbPtr openDatabase(const std::string& file, int flags) {
  sqlite3* raw = nullptr;
  int rc = sqlite3_open_v2(file.c_str(), &raw, flags, nullptr);
  DbPtr db(raw);
  if (rc != SQLITE_OK) {
    throw std::runtime_error("cannot open database '" + file + "': " + sqlite3_errmsg(raw));
  }
  // The device's processes write the same file; a tool waits its turn rather
  // than failing on a lock that is gone a moment later.
  sqlite3_busy_timeout(db.get(), 2000);
  return db;
}

StmtPtr prepare(sqlite3* db, const std::string& sql) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &raw, nullptr) != SQLITE_OK) {
    throw std::runtime_error(std::string("database error: ") + sqlite3_errmsg(db));
  }
  return StmtPtr(raw);
}

}  // namespace

nlohmann::json readTable(const std::string& databaseFile, const std::string& table) {
  DbPtr db = openDatabase(databaseFile, SQLITE_OPEN_READONLY);
  StmtPtr query = prepare(db.get(), "SELECT * FROM \"" + table + "\" ORDER BY rowid");
  nlohmann::json rows = nlohmann::json::array();
  while (sqlite3_step(query.get()) == SQLITE_ROW) {
    nlohmann::json row = nlohmann::json::object();
    for (int i = 0; i < sqlite3_column_count(query.get()); ++i) {
      const char* name = sqlite3_column_name(query.get(), i);
      switch (sqlite3_column_type(query.get(), i)) {
        case SQLITE_NULL: row[name] = nullptr; break;
        case SQLITE_INTEGER: row[name] = sqlite3_column_int64(query.get(), i); break;
        case SQLITE_FLOAT: row[name] = sqlite3_column_double(query.get(), i); break;
        default:
          row[name] = reinterpret_cast<const char*>(sqlite3_column_text(query.get(), i));
      }
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

const std::vector<std::string>& historyColumns() {
  static const std::vector<std::string> columns = {
      "phoneNumber", "name", "message", "date", "blockType", "mediaType", "mediaFileName", "isMine"};
  return columns;
}

void printTable(std::ostream& out, const nlohmann::json& rows,
                const std::vector<std::string>& columns) {
  auto cell = [](const nlohmann::json& v) {
    if (v.is_null()) return std::string("NULL");
    if (v.is_string()) return v.get<std::string>();
    if (v.is_number_float()) {
      std::ostringstream s;
      s << std::fixed << std::setprecision(1) << v.get<double>();
      return s.str();
    }
    return v.dump();
  };
  std::vector<std::size_t> widths;
  for (const auto& c : columns) {
    std::size_t w = c.size();
    for (const auto& r : rows) w = std::max(w, cell(r.value(c, nlohmann::json())).size());
    widths.push_back(std::min<std::size_t>(w, 48));
  }
  auto line = [&](auto text) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
      std::string t = text(i);
      if (t.size() > widths[i]) t = t.substr(0, widths[i] - 1) + "~";
      out << std::left << std::setw(static_cast<int>(widths[i]) + 2) << t;
    }
    out << "\n";
  };
  line([&](std::size_t i) { return columns[i]; });
  for (const auto& r : rows) line([&](std::size_t i) { return cell(r.value(columns[i], nlohmann::json())); });
}

}  // namespace hushwall::tools
