#include "testing/statement_outcomes.h"

#include <dlfcn.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace hushwall::testing {
namespace {

// Process-wide by nature: SQLite's entry points are.
struct Watch {
  std::string prefix;
  bool active = false;
  StatementOutcomes counts;
};

Watch& watch() {
  static Watch* w = new Watch();  // lives until the process ends, as the layer does
  return *w;
}

bool watched(const char* sql) {
  const Watch& w = watch();
  return w.active && sql != nullptr && std::strncmp(sql, w.prefix.c_str(), w.prefix.size()) == 0;
}

bool isLocked(int result) {
  return (result & 0xFF) == SQLITE_BUSY || (result & 0xFF) == SQLITE_LOCKED;
}

// SQLite's own definition, found past this executable in the lookup order.
template <typename Function>
Function next(const char* name) {
  void* symbol = ::dlsym(RTLD_NEXT, name);
  if (symbol == nullptr) {
    std::fprintf(stderr, "statement_outcomes: no %s after this binary\n", name);
    std::abort();
  }
  return reinterpret_cast<Function>(symbol);
}

}  // namespace

void watchStatements(const std::string& sqlPrefix) {
  watch().prefix = sqlPrefix;
  watch().counts = StatementOutcomes{};
  watch().active = true;
}

StatementOutcomes watchedOutcomes() { return watch().counts; }

}  // namespace hushwall::testing

// Defined in the executable, these come before libsqlite3's in the dynamic
// linker's lookup order, so the library that the test loads binds to them too.
extern "C" int sqlite3_prepare_v2(sqlite3* db, const char* sql, int bytes, sqlite3_stmt** statement,
                                  const char** tail) {
  using Prepare = int (*)(sqlite3*, const char*, int, sqlite3_stmt**, const char**);
  static const Prepare real = hushwall::testing::next<Prepare>("sqlite3_prepare_v2");
  int result = real(db, sql, bytes, statement, tail);
  if (hushwall::testing::watched(sql)) {
    auto& counts = hushwall::testing::watch().counts;
    if (result == SQLITE_OK) ++counts.prepared;
    else if (hushwall::testing::isLocked(result)) ++counts.prepareLocked;
    else ++counts.prepareFailed;
  }
  return result;
}

extern "C" int sqlite3_step(sqlite3_stmt* statement) {
  using Step = int (*)(sqlite3_stmt*);
  static const Step real = hushwall::testing::next<Step>("sqlite3_step");
  int result = real(statement);
  if (statement != nullptr && hushwall::testing::watched(sqlite3_sql(statement))) {
    auto& counts = hushwall::testing::watch().counts;
    if (result == SQLITE_DONE) ++counts.done;
    else if (result == SQLITE_ROW) ++counts.rows;
    else if (hushwall::testing::isLocked(result)) ++counts.stepLocked;
    else ++counts.stepFailed;
  }
  return result;
}
