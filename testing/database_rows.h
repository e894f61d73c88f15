// Reading and preparing the database from a test, straight through the
// SQLite C interface, apart from the library's own statements.
#ifndef HUSHWALL_TESTING_DATABASE_ROWS_H_
#define HUSHWALL_TESTING_DATABASE_ROWS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace hushwall::testing {

// One History row as stored; SQL NULL is absent, so NULL and "" (or 0) stay
// apart.
struct HistoryRow {
  std::optional<std::string> phoneNumber;
  std::optional<std::string> name;
  std::optional<std::string> message;
  std::optional<double> date;
  std::optional<std::int64_t> blockType;
  std::optional<std::int64_t> mediaType;
  std::optional<std::string> mediaFileName;
  std::optional<std::string> mediaURL;
  std::optional<std::int64_t> isMine;
};

// Every History row in rowid (insertion) order. Throws std::runtime_error
// when the file or the table cannot be read.
std::vector<HistoryRow> readHistoryRows(const std::string& databaseFile);

// Runs SQL (several statements allowed) on the file. Throws
// std::runtime_error with SQLite's message on failure.
void execSql(const std::string& databaseFile, const std::string& sql);

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_DATABASE_ROWS_H_
