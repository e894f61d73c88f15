// The History table as another process sees it while a host process writes
// it: read through a connection of the test's own that waits out the
// writer's locks, so that a snapshot is never refused, only delayed.
#ifndef HUSHWALL_TESTING_HISTORY_SNAPSHOT_H_
#define HUSHWALL_TESTING_HISTORY_SNAPSHOT_H_

#include <cstdint>
#include <map>
#include <string>

#include "testing/database_rows.h"

namespace hushwall::testing {

// Every History row by rowid, read in one statement (one consistent view).
// Throws std::runtime_error when the table cannot be read.
std::map<std::int64_t, HistoryRow> snapshotHistory(const std::string& databaseFile);

// The answer of PRAGMA integrity_check, its rows joined by newlines: "ok" for
// a sound file. A file with a hot journal is rolled back first, as any
// SQLite connection does on its first read.
std::string integrityCheck(const std::string& databaseFile);

// All nine columns equal, NULLs included.
bool sameRow(const HistoryRow& a, const HistoryRow& b);

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_HISTORY_SNAPSHOT_H_
