// The purge's one-pass search against its defining query, on generated
// blacklist entries and message rows: for every entry that the one pass
// answers, both must give the same JIDs in the same order.
//
// Input: fields separated by 0xFF. The first byte's low three bits say how
// many fields are entries; the rest come in pairs (ZTOJID, ZFROMJID), where
// a field that is exactly 0xFE is NULL. Texts keep any bytes, NUL included.
#include <sanitizer/lsan_interface.h>
#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/fuzz_check.h"
#include "host/text.h"
#include "messenger/chat_search.h"
#include "model/database.h"
#include "testing/fake_env.h"

namespace {

struct World {
  hushwall::testing::FakeEnv env;
  const hushwall::host::Text devicePath = hushwall::host::T("/ChatStorage.sqlite");
  sqlite3* writer = nullptr;
  World() {
    sqlite3_open(env.fileSystem.nativePath(devicePath).c_str(), &writer);
    sqlite3_exec(writer,
                 "PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY;"
                 "CREATE TABLE ZWAMESSAGE (Z_PK INTEGER PRIMARY KEY, ZTOJID VARCHAR, ZFROMJID VARCHAR)",
                 nullptr, nullptr, nullptr);
  }
};

void bindField(sqlite3_stmt* insert, int index, const std::string& field) {
  if (field == "\xFE") sqlite3_bind_null(insert, index);
  else sqlite3_bind_text(insert, index, field.data(), static_cast<int>(field.size()), SQLITE_TRANSIENT);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace hushwall;
  static World* world = new World();  // one device for the whole run
  if (size == 0) return 0;
  std::vector<std::string> fields(1);
  for (std::size_t i = 1; i < size; ++i) {
    if (data[i] == 0xFF) fields.emplace_back();
    else fields.back().push_back(static_cast<char>(data[i]));
  }
  const std::size_t entryCount = std::min<std::size_t>(data[0] & 7, fields.size());
  std::vector<host::Text> entries;
  for (std::size_t i = 0; i < entryCount; ++i) entries.push_back(host::fromUtf8(std::string_view(fields[i])));

  sqlite3_exec(world->writer, "BEGIN; DELETE FROM ZWAMESSAGE", nullptr, nullptr, nullptr);
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(world->writer, "INSERT INTO ZWAMESSAGE (ZTOJID, ZFROMJID) VALUES (?, ?)", -1, &insert, nullptr);
  for (std::size_t i = entryCount; i + 1 < fields.size(); i += 2) {
    bindField(insert, 1, fields[i]);
    bindField(insert, 2, fields[i + 1]);
    sqlite3_step(insert);
    sqlite3_reset(insert);
  }
  sqlite3_finalize(insert);
  sqlite3_exec(world->writer, "COMMIT", nullptr, nullptr, nullptr);

  Database db(world->devicePath);
  const std::vector<std::optional<host::Array>> onePass = sessionsInOnePass(db, entries);
  HUSHWALL_FUZZ_CHECK(onePass.size() == entries.size(), "one result per entry");
  for (std::size_t i = 0; i < entries.size(); ++i) {
    HUSHWALL_FUZZ_CHECK(onePass[i].has_value() == searchableInOnePass(entries[i]),
                        "the one pass answered an entry it cannot, or left one it can");
    if (onePass[i]) {
      // The query's text is never freed, on purpose (scripts/lsan.supp); the
      // fuzzer's fast unwinding cannot name the function through SQLite.
      __lsan_disable();
      const host::Array byQuery = sessionsByQuery(db, entries[i]);
      __lsan_enable();
      HUSHWALL_FUZZ_CHECK(*onePass[i] == byQuery, "the one pass and the query found different JIDs");
    }
  }
  return 0;
}
