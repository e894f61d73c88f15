// The companion's reading of database rows, over rows of any content: what
// another writer of the device's database could store. Each input is a list
// of cells (a kind byte, a length byte, that many bytes) stored in a
// three-column table of an in-memory database, read back with rowAsJson and
// shown with printTable. Nothing may throw; the JSON must dump as UTF-8; text
// must come back whole (repaired where it was not UTF-8); the text table must
// have one line per row, each UTF-8 and as wide on screen as the others.
#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/fuzz_check.h"
#include "host/text.h"
#include "tools/display_width.h"
#include "tools/history_table.h"
#include "tools/row_json.h"

namespace {

struct CloseDb {
  void operator()(sqlite3* db) const { sqlite3_close(db); }
};
struct Finalize {
  void operator()(sqlite3_stmt* s) const { sqlite3_finalize(s); }
};

constexpr int kColumns = 3;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sqlite3* raw = nullptr;
  sqlite3_open(":memory:", &raw);
  std::unique_ptr<sqlite3, CloseDb> db(raw);
  sqlite3_exec(db.get(), "CREATE TABLE t (phoneNumber, name, \"\xFFmessage\")", nullptr, nullptr, nullptr);
  sqlite3_stmt* rawInsert = nullptr;
  sqlite3_prepare_v2(db.get(), "INSERT INTO t VALUES (?, ?, ?)", -1, &rawInsert, nullptr);
  std::unique_ptr<sqlite3_stmt, Finalize> insert(rawInsert);

  // What each stored text cell held, to compare with what comes back.
  std::vector<std::string> texts, rowTexts;
  std::size_t pos = 0;
  int column = 0;
  while (pos + 2 <= size) {
    const std::uint8_t kind = data[pos] % 5;
    const std::size_t length = std::min<std::size_t>(data[pos + 1], size - pos - 2);
    const std::string bytes(reinterpret_cast<const char*>(data + pos + 2), length);
    pos += 2 + length;
    const int index = column % kColumns + 1;
    switch (kind) {
      case 0: sqlite3_bind_null(insert.get(), index); break;
      case 1: sqlite3_bind_int64(insert.get(), index, static_cast<std::int64_t>(std::hash<std::string>()(bytes)));
        break;
      case 2: sqlite3_bind_double(insert.get(), index, length * 1e300 * (bytes.empty() ? 1 : bytes[0]));
        break;
      case 3:
        sqlite3_bind_text(insert.get(), index, bytes.data(), static_cast<int>(length), SQLITE_TRANSIENT);
        rowTexts.push_back(bytes);
        break;
      default: sqlite3_bind_blob(insert.get(), index, bytes.data(), static_cast<int>(length), SQLITE_TRANSIENT);
    }
    if (++column % kColumns == 0) {
      if (sqlite3_step(insert.get()) == SQLITE_DONE) texts.insert(texts.end(), rowTexts.begin(), rowTexts.end());
      sqlite3_reset(insert.get());
      rowTexts.clear();
    }
  }

  sqlite3_stmt* rawQuery = nullptr;
  sqlite3_prepare_v2(db.get(), "SELECT * FROM t ORDER BY rowid", -1, &rawQuery, nullptr);
  std::unique_ptr<sqlite3_stmt, Finalize> query(rawQuery);
  nlohmann::json rows = nlohmann::json::array();
  while (sqlite3_step(query.get()) == SQLITE_ROW) rows.push_back(hushwall::tools::rowAsJson(query.get()));

  const std::string dumped = rows.dump();
  HUSHWALL_FUZZ_CHECK(hushwall::host::isValidUtf8(dumped), "JSON of the rows is not UTF-8");
  // Every text cell comes back whole: unchanged when it was UTF-8, repaired
  // by the one rule when it was not.
  for (const std::string& text : texts) {
    HUSHWALL_FUZZ_CHECK(dumped.find(nlohmann::json(hushwall::host::repairUtf8(text)).dump()) != std::string::npos,
                        "a text cell did not come back whole");
  }

  std::ostringstream table;
  hushwall::tools::printTable(table, rows, {"phoneNumber", "name", "\xEF\xBF\xBDmessage"});
  std::istringstream lines(table.str());
  std::string line;
  std::size_t width = 0, count = 0;
  while (std::getline(lines, line)) {
    ++count;
    HUSHWALL_FUZZ_CHECK(hushwall::host::isValidUtf8(line), "a table line is not UTF-8");
    if (width == 0) width = hushwall::tools::displayWidth(line);
    HUSHWALL_FUZZ_CHECK(hushwall::tools::displayWidth(line) == width, "table lines of different widths");
  }
  HUSHWALL_FUZZ_CHECK(count == rows.size() + 1, "a cell broke its table line");
  return 0;
}
