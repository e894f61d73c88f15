// The settings bundle's own connection to the device's database. Unlike the
// library, which keeps its statements exactly as they always were, the
// bundle reports every failure to the user, waits briefly for a lock held by
// the apps, and makes each change in one transaction.
#ifndef HUSHWALL_COMPANION_COMPANION_DATABASE_H_
#define HUSHWALL_COMPANION_COMPANION_DATABASE_H_

#include <sqlite3.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/file_system.h"

namespace hushwall::companion {

class CompanionDatabase {
 public:
  // Opens the data directory's database read-write, never creating it.
  // Throws std::runtime_error naming the file when it is missing (the device
  // is not set up) or cannot be opened.
  explicit CompanionDatabase(host::FileSystem& files);
  ~CompanionDatabase();
  CompanionDatabase(const CompanionDatabase&) = delete;
  CompanionDatabase& operator=(const CompanionDatabase&) = delete;

  sqlite3* handle() const { return db_; }
  const std::string& file() const { return file_; }
  // Runs statements without results; throws std::runtime_error.
  void exec(const char* sql);
  // Rows changed by the last statement.
  int changes() const { return sqlite3_changes(db_); }

 private:
  std::string file_;
  sqlite3* db_ = nullptr;
};

// One prepared statement, finalised when it goes. Every error throws
// std::runtime_error with SQLite's message.
class Query {
 public:
  Query(const CompanionDatabase& db, const char* sql);
  ~Query();
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  Query& bind(int index, std::string_view text);
  Query& bind(int index, std::int64_t value);
  // True with a row to read, false when done.
  bool next();
  // Ready to run again, with new bindings.
  void reset();

  // A column's bytes as stored (a number as its text); nothing for NULL.
  std::optional<std::string_view> bytes(int index) const;
  // A number stored as one; nothing for NULL, a text or a blob.
  std::optional<double> real(int index) const;
  std::int64_t integer(int index) const;        // 0 for NULL

 private:
  const CompanionDatabase& db_;
  sqlite3_stmt* stmt_ = nullptr;
};

// BEGIN IMMEDIATE: the check and the change that follows it see the same
// table, whatever the apps write meanwhile. Rolled back unless committed.
class Transaction {
 public:
  explicit Transaction(CompanionDatabase& db);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void commit();

 private:
  CompanionDatabase& db_;
  bool open_ = true;
};

}  // namespace hushwall::companion

#endif  // HUSHWALL_COMPANION_COMPANION_DATABASE_H_
