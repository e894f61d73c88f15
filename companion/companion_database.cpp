#include "companion/companion_database.h"

#include <stdexcept>

#include "model/paths.h"

namespace hushwall::companion {
namespace {

// The apps write the same file; a user's change waits its turn rather than
// failing on a lock that is gone a moment later.
constexpr int kBusyWaitMilliseconds = 2000;

[[noreturn]] void fail(sqlite3* db, const std::string& what) {
  throw std::runtime_error(what + ": " + (db != nullptr ? sqlite3_errmsg(db) : "out of memory"));
}

}  // namespace

CompanionDatabase::CompanionDatabase(host::FileSystem& files) {
  const host::Text path = host::T(std::string(kDataDirectory) + kDatabaseComponent);
  file_ = files.nativePath(path);
  if (!files.fileExists(path)) {
    throw std::runtime_error("no database at " + file_ +
                             ": the device is not set up (SpringBoard copies the template there "
                             "when it first starts)");
  }
  if (sqlite3_open_v2(file_.c_str(), &db_, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
    std::string message = "cannot open database '" + file_ + "': " +
                          (db_ != nullptr ? sqlite3_errmsg(db_) : "out of memory");
    sqlite3_close(db_);
    throw std::runtime_error(message);
  }
  sqlite3_busy_timeout(db_, kBusyWaitMilliseconds);
}

CompanionDatabase::~CompanionDatabase() { sqlite3_close(db_); }

void CompanionDatabase::exec(const char* sql) {
  if (sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail(db_, "database error");
}

Query::Query(const CompanionDatabase& db, const char* sql) : db_(db) {
  if (sqlite3_prepare_v2(db.handle(), sql, -1, &stmt_, nullptr) != SQLITE_OK) {
    sqlite3_finalize(stmt_);
    fail(db.handle(), "database error in " + db.file());
  }
}

Query::~Query() { sqlite3_finalize(stmt_); }

Query& Query::bind(int index, std::string_view text) {
  sqlite3_bind_text(stmt_, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
  return *this;
}

Query& Query::bind(int index, std::int64_t value) {
  sqlite3_bind_int64(stmt_, index, value);
  return *this;
}

bool Query::next() {
  const int result = sqlite3_step(stmt_);
  if (result == SQLITE_ROW) return true;
  if (result == SQLITE_DONE) return false;
  fail(db_.handle(), "database error in " + db_.file());
}

void Query::reset() { sqlite3_reset(stmt_); }

std::optional<std::string_view> Query::bytes(int index) const {
  if (sqlite3_column_type(stmt_, index) == SQLITE_NULL) return std::nullopt;
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, index));
  if (text == nullptr) return std::string_view();  // an empty blob, or no memory
  return std::string_view(text, static_cast<std::size_t>(sqlite3_column_bytes(stmt_, index)));
}

std::optional<double> Query::real(int index) const {
  const int type = sqlite3_column_type(stmt_, index);
  if (type != SQLITE_INTEGER && type != SQLITE_FLOAT) return std::nullopt;
  return sqlite3_column_double(stmt_, index);
}

std::int64_t Query::integer(int index) const { return sqlite3_column_int64(stmt_, index); }

Transaction::Transaction(CompanionDatabase& db) : db_(db) { db_.exec("BEGIN IMMEDIATE"); }

Transaction::~Transaction() {
  if (open_) sqlite3_exec(db_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::commit() {
  db_.exec("COMMIT");
  open_ = false;
}

}  // namespace hushwall::companion
