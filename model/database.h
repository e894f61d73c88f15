// Thin RAII over the SQLite C interface, shaped by how Hushwall uses its
// database: open the file, run one statement (or one batch), close it, in the
// same call; nothing is cached between calls.
//
// Readers let both objects clean up. Writers call Statement::keepUnfinalized()
// after resetting: their statement is never finalised, so the close that
// follows answers SQLITE_BUSY and the connection stays open for the rest of
// the process. That is how the shipped tweak has always behaved, and other
// programs that share the file see the same locking as before; it is kept on
// purpose.
#ifndef HUSHWALL_MODEL_DATABASE_H_
#define HUSHWALL_MODEL_DATABASE_H_

#include <sqlite3.h>

#include <cstdint>

#include "host/text.h"

namespace hushwall {

class Database {
 public:
  // sqlite3_open on the native path of a device path (read-write, created
  // when missing). Check isOpen() before use.
  explicit Database(const host::Text& devicePath);
  // sqlite3_close, result ignored; also after a failed open, whose handle
  // needs closing too.
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  bool isOpen() const { return openResult_ == SQLITE_OK; }
  sqlite3* handle() const { return db_; }
  // The writers do not close the handle of a failed open; this lets them say
  // so instead of closing it.
  void keepOpenOnFailure() { db_ = nullptr; }

 private:
  sqlite3* db_ = nullptr;
  int openResult_;
};

class Statement {
 public:
  // sqlite3_prepare_v2 of the whole text. Check isPrepared() before use.
  Statement(const Database& db, const char* sql);
  // sqlite3_finalize, unless keepUnfinalized() was called (finalising a
  // statement that failed to prepare is harmless, as SQLite allows).
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  bool isPrepared() const { return prepareResult_ == SQLITE_OK; }
  sqlite3_stmt* handle() const { return stmt_; }

  // Parameters count from 1. An absent text binds NULL. Text is copied at once.
  void bindText(int index, const host::OptText& text);
  void bindDouble(int index, double value);
  void bindInt(int index, std::int32_t value);

  int step();   // the raw result: SQLITE_ROW, SQLITE_DONE or an error
  void reset();

  host::OptText columnText(int index) const;  // NULL gives absent
  // The same into `out`, reusing its storage; false, and `out` untouched,
  // for NULL.
  bool columnTextInto(int index, host::Text& out) const;
  double columnDouble(int index) const;

  // The writers' convention; see the top of this file.
  void keepUnfinalized() { finalize_ = false; }

 private:
  sqlite3_stmt* stmt_ = nullptr;
  int prepareResult_;
  bool finalize_ = true;
};

}  // namespace hushwall

#endif  // HUSHWALL_MODEL_DATABASE_H_
