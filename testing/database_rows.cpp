#include "testing/database_rows.h"

#include <sqlite3.h>
#include <unistd.h>

#include <stdexcept>

#include "testing/history_snapshot.h"

namespace hushwall::testing {
namespace {

// A writer that commits row after row holds its lock most of the time and
// leaves only short gaps. SQLite's own busy timeout sleeps longer and longer
// between tries and can miss every gap for seconds, so this one keeps trying
// every fraction of a millisecond, for up to ten seconds.
int retrySoon(void*, int attempts) {
  constexpr int kAttempts = 50000;
  if (attempts >= kAttempts) return 0;
  ::usleep(200);
  return 1;
}

// The test's own connection, closed however its query ends.
class Connection {
 public:
  explicit Connection(const std::string& file, int flags = SQLITE_OPEN_READWRITE) {
    if (sqlite3_open_v2(file.c_str(), &db_, flags, nullptr) != SQLITE_OK) {
      std::string message = db_ ? sqlite3_errmsg(db_) : "out of memory";
      sqlite3_close(db_);
      throw std::runtime_error("cannot open " + file + ": " + message);
    }
    sqlite3_busy_handler(db_, retrySoon, nullptr);
  }
  ~Connection() { sqlite3_close(db_); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Runs `sql`, handing each row to `row`; throws when the statement fails.
  template <typename Row>
  void query(const char* sql, Row row) {
    sqlite3_stmt* s = nullptr;
    if (sqlite3_prepare_v2(db_, sql, -1, &s, nullptr) != SQLITE_OK) {
      throw std::runtime_error(std::string("cannot prepare ") + sql + ": " + sqlite3_errmsg(db_));
    }
    int result;
    while ((result = sqlite3_step(s)) == SQLITE_ROW) row(s);
    sqlite3_finalize(s);
    if (result != SQLITE_DONE) throw std::runtime_error(std::string(sql) + ": " + sqlite3_errmsg(db_));
  }
  sqlite3* handle() const { return db_; }

 private:
  sqlite3* db_ = nullptr;
};

std::optional<std::string> text(sqlite3_stmt* s, int i) {
  if (sqlite3_column_type(s, i) == SQLITE_NULL) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(sqlite3_column_text(s, i)));
}
std::optional<std::int64_t> integer(sqlite3_stmt* s, int i) {
  if (sqlite3_column_type(s, i) == SQLITE_NULL) return std::nullopt;
  return sqlite3_column_int64(s, i);
}
std::optional<double> real(sqlite3_stmt* s, int i) {
  if (sqlite3_column_type(s, i) == SQLITE_NULL) return std::nullopt;
  return sqlite3_column_double(s, i);
}

// Every History row by rowid, in one statement (one consistent view).
std::map<std::int64_t, HistoryRow> historyByRowid(const std::string& databaseFile, int flags) {
  std::map<std::int64_t, HistoryRow> rows;
  Connection(databaseFile, flags).query(
      "SELECT rowid, phoneNumber, name, message, date, blockType, mediaType, mediaFileName, "
      "mediaURL, isMine FROM History",
      [&](sqlite3_stmt* s) {
        rows[sqlite3_column_int64(s, 0)] =
            HistoryRow{text(s, 1),    text(s, 2), text(s, 3), real(s, 4), integer(s, 5),
                       integer(s, 6), text(s, 7), text(s, 8), integer(s, 9)};
      });
  return rows;
}

}  // namespace

std::vector<HistoryRow> readHistoryRows(const std::string& databaseFile) {
  std::vector<HistoryRow> rows;
  for (auto& [rowid, row] : historyByRowid(databaseFile, SQLITE_OPEN_READONLY)) {
    rows.push_back(std::move(row));
  }
  return rows;
}

std::map<std::int64_t, HistoryRow> snapshotHistory(const std::string& databaseFile) {
  return historyByRowid(databaseFile, SQLITE_OPEN_READWRITE);
}

std::string integrityCheck(const std::string& databaseFile) {
  std::string answer;
  Connection(databaseFile).query("PRAGMA integrity_check", [&](sqlite3_stmt* s) {
    if (!answer.empty()) answer += '\n';
    answer += text(s, 0).value_or("NULL");
  });
  return answer;
}

bool sameRow(const HistoryRow& a, const HistoryRow& b) {
  return a.phoneNumber == b.phoneNumber && a.name == b.name && a.message == b.message &&
         a.date == b.date && a.blockType == b.blockType && a.mediaType == b.mediaType &&
         a.mediaFileName == b.mediaFileName && a.mediaURL == b.mediaURL && a.isMine == b.isMine;
}

void execSql(const std::string& databaseFile, const std::string& sql) {
  Connection db(databaseFile, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  char* error = nullptr;
  if (sqlite3_exec(db.handle(), sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    std::string message = error != nullptr ? error : "unknown error";
    sqlite3_free(error);
    throw std::runtime_error(message + " in: " + sql);
  }
}

}  // namespace hushwall::testing
