#include "testing/history_snapshot.h"

#include <sqlite3.h>
#include <unistd.h>

#include <stdexcept>

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

class Connection {
 public:
  explicit Connection(const std::string& file) {
    if (sqlite3_open_v2(file.c_str(), &db_, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
      std::string message = db_ ? sqlite3_errmsg(db_) : "out of memory";
      sqlite3_close(db_);
      throw std::runtime_error("cannot open " + file + ": " + message);
    }
    sqlite3_busy_handler(db_, retrySoon, nullptr);
  }
  ~Connection() { sqlite3_close(db_); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  sqlite3_stmt* prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db_, sql, -1, &statement, nullptr) != SQLITE_OK) {
      throw std::runtime_error(std::string("cannot prepare ") + sql + ": " + sqlite3_errmsg(db_));
    }
    return statement;
  }
  std::string error() const { return sqlite3_errmsg(db_); }

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

}  // namespace

std::map<std::int64_t, HistoryRow> snapshotHistory(const std::string& databaseFile) {
  Connection db(databaseFile);
  sqlite3_stmt* s = db.prepare(
      "SELECT rowid, phoneNumber, name, message, date, blockType, mediaType, mediaFileName, "
      "mediaURL, isMine FROM History");
  std::map<std::int64_t, HistoryRow> rows;
  int result;
  while ((result = sqlite3_step(s)) == SQLITE_ROW) {
    rows[sqlite3_column_int64(s, 0)] =
        HistoryRow{text(s, 1),    text(s, 2),    text(s, 3), real(s, 4), integer(s, 5),
                   integer(s, 6), text(s, 7),    text(s, 8), integer(s, 9)};
  }
  sqlite3_finalize(s);
  if (result != SQLITE_DONE) throw std::runtime_error("reading History failed: " + db.error());
  return rows;
}

std::string integrityCheck(const std::string& databaseFile) {
  Connection db(databaseFile);
  sqlite3_stmt* s = db.prepare("PRAGMA integrity_check");
  std::string answer;
  int result;
  while ((result = sqlite3_step(s)) == SQLITE_ROW) {
    if (!answer.empty()) answer += '\n';
    answer += text(s, 0).value_or("NULL");
  }
  sqlite3_finalize(s);
  if (result != SQLITE_DONE) throw std::runtime_error("integrity_check failed: " + db.error());
  return answer;
}

bool sameRow(const HistoryRow& a, const HistoryRow& b) {
  return a.phoneNumber == b.phoneNumber && a.name == b.name && a.message == b.message &&
         a.date == b.date && a.blockType == b.blockType && a.mediaType == b.mediaType &&
         a.mediaFileName == b.mediaFileName && a.mediaURL == b.mediaURL && a.isMine == b.isMine;
}

}  // namespace hushwall::testing
