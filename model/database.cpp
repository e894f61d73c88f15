#include "model/database.h"

#include <string>

#include "host/env.h"

namespace hushwall {

Database::Database(const host::Text& devicePath) {
  std::string path = host::env().fileSystem->nativePath(devicePath);
  openResult_ = sqlite3_open(path.c_str(), &db_);
}

Database::~Database() {
  if (db_ != nullptr) sqlite3_close(db_);
}

Statement::Statement(const Database& db, const char* sql) {
  prepareResult_ = sqlite3_prepare_v2(db.handle(), sql, -1, &stmt_, nullptr);
}

Statement::~Statement() {
  if (finalize_) sqlite3_finalize(stmt_);
}

void Statement::bindText(int index, const host::OptText& text) {
  if (!text) {
    // What binding a nil string's null character pointer does.
    sqlite3_bind_text(stmt_, index, nullptr, -1, SQLITE_TRANSIENT);
    return;
  }
  std::string utf8 = host::toUtf8(*text);
  sqlite3_bind_text(stmt_, index, utf8.c_str(), -1, SQLITE_TRANSIENT);
}

void Statement::bindDouble(int index, double value) { sqlite3_bind_double(stmt_, index, value); }

void Statement::bindInt(int index, std::int32_t value) { sqlite3_bind_int(stmt_, index, value); }

int Statement::step() { return sqlite3_step(stmt_); }

void Statement::reset() { sqlite3_reset(stmt_); }

host::OptText Statement::columnText(int index) const {
  return host::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(stmt_, index)));
}

bool Statement::columnTextInto(int index, host::Text& out) const {
  const char* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, index));
  if (text == nullptr) return false;
  host::assignFromUtf8(out, text);
  return true;
}

double Statement::columnDouble(int index) const { return sqlite3_column_double(stmt_, index); }

}  // namespace hushwall
