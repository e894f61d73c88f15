// The in-memory blacklist: the test that runs for every incoming message and
// notification, and the reload that fills it.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <random>
#include <string>
#include <vector>

#include "bench/benchmark_names.h"
#include "bench/database_placement.h"
#include "bench/model_benchmarks.h"
#include "model/hushwall.h"
#include "startup/blacklist.h"
#include "testing/database_rows.h"
#include "testing/fake_env.h"
#include "testing/process_state.h"

namespace hushwall::bench {
namespace {

// A sender that no entry covers, so that every test walks the whole list:
// the worst case, and the common one (most senders are not blacklisted).
const host::Text kCleanNumber = host::T("34699123456");

// Nine-digit entries as people type them, none of them inside kCleanNumber.
// Random digits, so that many entries begin with a digit that the number
// holds and the search has partial matches to reject.
std::vector<host::Text> entriesMissing(const host::Text& number, int count) {
  std::mt19937 random(20240601);
  std::uniform_int_distribution<int> digit(0, 9);
  std::vector<host::Text> entries;
  while (static_cast<int>(entries.size()) < count) {
    host::Text entry;
    for (int i = 0; i < 9; ++i) entry.push_back(static_cast<char16_t>(u'0' + digit(random)));
    if (number.find(entry) == host::Text::npos) entries.push_back(entry);
  }
  return entries;
}

void phoneNumberBlacklisted(benchmark::State& state, int entries) {
  testing::FreshProcessState fresh;  // contacts-only off: the list alone decides
  if (blacklistNumbers == nullptr) blacklistNumbers = new std::vector<host::Text>();
  *blacklistNumbers = entriesMissing(kCleanNumber, entries);
  const host::OptText number = kCleanNumber;
  Hushwall* model = Hushwall::sharedInstance();
  for (auto _ : state) {
    benchmark::DoNotOptimize(model->phoneNumberBlacklisted(number));
  }
}

// The floor: the platform's literal search (rangeOfString, which the test
// is specified by) over the same entries, with nothing around it: no list
// behind a process-wide pointer, no model object, no settings. Flattened, so
// that the search is inlined into the loop as it is in the model; left to
// itself the compiler calls it out of line here, and the floor would be
// higher than the thing it measures.
__attribute__((flatten, noinline)) bool anyEntryIn(const host::OptText& number,
                                                   const std::vector<host::Text>& list) {
  for (const host::Text& entry : list) {
    if (host::rangeOfString(number, entry).location != host::kNotFound) return true;
  }
  return false;
}

void literalSearchLoop(benchmark::State& state, int entries) {
  const std::vector<host::Text> list = entriesMissing(kCleanNumber, entries);
  const host::OptText number = kCleanNumber;
  for (auto _ : state) benchmark::DoNotOptimize(anyEntryIn(number, list));
}

// A Blacklist table of `rows` numbers in the data directory's database.
void fillBlacklist(const std::string& databaseFile, int rows) {
  std::string sql = "BEGIN;";
  for (int i = 0; i < rows; ++i) {
    sql += "INSERT INTO Blacklist (name, phoneNumber) VALUES ('Contact " + std::to_string(i) +
           "', '346" + std::to_string(10000000 + i) + "');";
  }
  sql += "COMMIT;";
  testing::execSql(databaseFile, sql);
}

void contactsChanged(benchmark::State& state, int rows) {
  testing::FakeEnv env;
  FollowingLinks links(env.root.path());
  testing::FreshProcessState fresh;
  PlacedDatabase database(HUSHWALL_TEMPLATE_DB, env.root.databaseFile(), Storage::kDisk);
  fillBlacklist(database.file(), rows);
  for (auto _ : state) ContactsChanged();
  if (blacklistNumbers == nullptr || static_cast<int>(blacklistNumbers->size()) != rows) {
    state.SkipWithError("the reload did not read every row");
  }
}

// The floor: the same query over the same file, each row's text looked at
// and nothing kept.
void bareSelect(benchmark::State& state, int rows) {
  testing::FakeEnv env;
  FollowingLinks links(env.root.path());
  PlacedDatabase database(HUSHWALL_TEMPLATE_DB, env.root.databaseFile(), Storage::kDisk);
  fillBlacklist(database.file(), rows);
  const std::string path = database.file();
  int read = 0;
  for (auto _ : state) {
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    sqlite3_stmt* query = nullptr;
    sqlite3_prepare_v2(db, "SELECT phoneNumber FROM Blacklist", -1, &query, nullptr);
    read = 0;
    while (sqlite3_step(query) == SQLITE_ROW) {
      benchmark::DoNotOptimize(sqlite3_column_text(query, 0));
      ++read;
    }
    sqlite3_finalize(query);
    sqlite3_close(db);
  }
  if (read != rows) state.SkipWithError("the select did not read every row");
}

}  // namespace

void registerBlacklistBenchmarks(const BenchSizes& sizes) {
  for (int entries : sizes.blacklistEntries) {
    benchmark::RegisterBenchmark(names::phoneNumberBlacklisted(entries).c_str(),
                                 phoneNumberBlacklisted, entries);
    benchmark::RegisterBenchmark(names::literalSearchLoop(entries).c_str(), literalSearchLoop,
                                 entries);
  }
  benchmark::RegisterBenchmark(names::contactsChanged(sizes.blacklistRows).c_str(),
                               contactsChanged, sizes.blacklistRows)
      ->Unit(benchmark::kMicrosecond);
  benchmark::RegisterBenchmark(names::bareSelect(sizes.blacklistRows).c_str(), bareSelect,
                               sizes.blacklistRows)
      ->Unit(benchmark::kMicrosecond);
}

}  // namespace hushwall::bench
