#include "tools/history_table.h"

#include <sqlite3.h>

#include <algorithm>
#include <iomanip>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "tools/display_width.h"
#include "tools/row_json.h"

namespace hushwall::tools {
namespace {

// Not companion::CompanionDatabase: that one opens the data directory's
// database through a device's file system for the settings bundle's changes;
// this reads any database file named by path, for display only (query_only).
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
  nlohmann::json rows = nlohmann::json::array();
  forEachRow(databaseFile, table, [&rows](const nlohmann::json& row) { rows.push_back(row); });
  return rows;
}

void printTableJson(std::ostream& out, const std::string& databaseFile, const std::string& table) {
  const char* separator = "[\n  ";
  forEachRow(databaseFile, table, [&](const nlohmann::json& row) {
    std::string text = row.dump(2);
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
      text.insert(at + 1, "  ");
    }
    out << separator << text;
    separator = ",\n  ";
  });
  out << (separator[0] == '[' ? "[]\n" : "\n]\n");
}

void forEachRow(const std::string& databaseFile, const std::string& table,
                const std::function<void(const nlohmann::json&)>& onRow) {
  // Read-write, though only to read: a writer killed in the middle of a
  // transaction leaves a hot journal, which the next reader must roll back
  // before it may read, and a read-only connection cannot. query_only keeps
  // this connection's own statements from writing. (A file the system will
  // not let us write is opened read-only all the same, by SQLite.)
  DbPtr db = openDatabase(databaseFile, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW);
  sqlite3_exec(db.get(), "PRAGMA query_only = 1", nullptr, nullptr, nullptr);
  StmtPtr query = prepare(db.get(), "SELECT * FROM \"" + table + "\" ORDER BY rowid");
  int rc;
  while ((rc = sqlite3_step(query.get())) == SQLITE_ROW) onRow(rowAsJson(query.get()));
  if (rc != SQLITE_DONE) {
    throw std::runtime_error("cannot read " + table + " from '" + databaseFile +
                             "': " + sqlite3_errmsg(db.get()));
  }
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
    if (v.is_string()) return printable(v.get<std::string>());
    if (v.is_number_float()) {
      std::ostringstream s;
      s << std::fixed << std::setprecision(1) << v.get<double>();
      return s.str();
    }
    return v.dump();
  };
  std::vector<std::size_t> widths;
  for (const auto& c : columns) {
    std::size_t w = displayWidth(printable(c));
    for (const auto& r : rows) w = std::max(w, displayWidth(cell(r.value(c, nlohmann::json()))));
    widths.push_back(std::min<std::size_t>(w, 48));
  }
  auto line = [&](auto text) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
      std::string t = text(i);
      if (displayWidth(t) > widths[i]) t = cutToWidth(t, widths[i] - 1) + "~";
      out << t << std::string(widths[i] + 2 - displayWidth(t), ' ');
    }
    out << "\n";
  };
  line([&](std::size_t i) { return printable(columns[i]); });
  for (const auto& r : rows) line([&](std::size_t i) { return cell(r.value(columns[i], nlohmann::json())); });
}

}  // namespace hushwall::tools
