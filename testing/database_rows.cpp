#include "testing/database_rows.h"

#include <sqlite3.h>

#include <stdexcept>

namespace hushwall::testing {
namespace {

// Closes the handle however the test's query ends.
struct Connection {
  sqlite3* db = nullptr;
  ~Connection() { sqlite3_close(db); }
};

std::optional<std::string> textColumn(sqlite3_stmt* stmt, int index) {
  if (sqlite3_column_type(stmt, index) == SQLITE_NULL) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(sqlite3_column_text(stmt, index)));
}

std::optional<std::int64_t> intColumn(sqlite3_stmt* stmt, int index) {
  if (sqlite3_column_type(stmt, index) == SQLITE_NULL) return std::nullopt;
  return sqlite3_column_int64(stmt, index);
}

std::optional<double> doubleColumn(sqlite3_stmt* stmt, int index) {
  if (sqlite3_column_type(stmt, index) == SQLITE_NULL) return std::nullopt;
  return sqlite3_column_double(stmt, index);
}

}  // namespace

std::vector<HistoryRow> readHistoryRows(const std::string& databaseFile) {
  Connection conn;
  if (sqlite3_open_v2(databaseFile.c_str(), &conn.db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    throw std::runtime_error("cannot open " + databaseFile);
  }
  sqlite3_busy_timeout(conn.db, 5000);  // a test may read while another process writes
  sqlite3_stmt* stmt = nullptr;
  const char* sql =
      "SELECT phoneNumber, name, message, date, blockType, mediaType, mediaFileName, mediaURL, "
      "isMine FROM History ORDER BY rowid";
  if (sqlite3_prepare_v2(conn.db, sql, -1, &stmt, nullptr) != SQLITE_OK) {
    throw std::runtime_error(std::string("cannot read History: ") + sqlite3_errmsg(conn.db));
  }
  std::vector<HistoryRow> rows;
  int rc;
  while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
    rows.push_back(HistoryRow{textColumn(stmt, 0), textColumn(stmt, 1), textColumn(stmt, 2),
                              doubleColumn(stmt, 3), intColumn(stmt, 4), intColumn(stmt, 5),
                              textColumn(stmt, 6), textColumn(stmt, 7), intColumn(stmt, 8)});
  }
  sqlite3_finalize(stmt);
  if (rc != SQLITE_DONE) throw std::runtime_error("reading History failed");
  return rows;
}

void execSql(const std::string& databaseFile, const std::string& sql) {
  Connection conn;
  if (sqlite3_open(databaseFile.c_str(), &conn.db) != SQLITE_OK) {
    throw std::runtime_error("cannot open " + databaseFile);
  }
  char* error = nullptr;
  if (sqlite3_exec(conn.db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    std::string message = error != nullptr ? error : "unknown error";
    sqlite3_free(error);
    throw std::runtime_error(message + " in: " + sql);
  }
}

}  // namespace hushwall::testing
