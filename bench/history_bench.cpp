// The block history: the duplicate test as the History grows, and the batch
// writer against the plainest way to store the same rows.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <chrono>
#include <string>
#include <vector>

#include "bench/benchmark_names.h"
#include "bench/cached_databases.h"
#include "bench/database_placement.h"
#include "bench/model_benchmarks.h"
#include "model/hushwall.h"
#include "testing/fake_env.h"

namespace hushwall::bench {
namespace {

using host::Value;

// The duplicate test for a row that is there (the newest of its pair, a
// minute before the timestamp), so the answer is YES and the index is used
// all the way down to the row.
void existMessage(benchmark::State& state, int rows) {
  testing::FakeEnv env;
  FollowingLinks links(env.root.path());
  linkDatabase(cachedHistoryDatabase(rows), env.root.databaseFile());
  const int probe = rows / 2;
  const host::OptText message = host::T(historyMessage(probe));
  const host::OptText number = host::T(historyNumber(probe));
  const double timestamp = historyDate(probe) + 60.0;
  Hushwall* model = Hushwall::sharedInstance();
  if (!model->existMessage(message, number, timestamp)) {
    state.SkipWithError("the probe row is not in the cached History");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(model->existMessage(message, number, timestamp));
}

// One blocked text message as the incoming filter hands it to the writer.
struct Record {
  std::string phoneNumber, name, message;
  float timestamp;
};

std::vector<Record> records(int count) {
  std::vector<Record> out;
  for (int i = 0; i < count; ++i) {
    out.push_back({"3461200" + std::to_string(1000 + i % 10), "Blocked sender " + std::to_string(i % 10),
                   "A message that was blocked, number " + std::to_string(i),
                   static_cast<float>(1700000000.0 + i)});
  }
  return out;
}

// The dictionaries of the incoming filter, keys and all (its block type sits
// under a key the writer does not read).
host::Array filterRecords(const std::vector<Record>& rows) {
  host::Array out;
  for (const Record& row : rows) {
    out.push_back(Value::dictionary({
        {host::T("phoneNumber"), Value::string(host::T(row.phoneNumber))},
        {host::T("name"), Value::string(host::T(row.name))},
        {host::T("message"), Value::string(host::T(row.message))},
        {host::T("timestamp"), Value::real(row.timestamp)},
        {host::T("blockType:kBLOCK_TYPE_APP"), Value::integer(1)},
        {host::T("isMine"), Value::boolean(false)},
        {host::T("mediaType"), Value::integer(0)},
        {host::T("mediaFileName"), Value::string(host::Text())},
        {host::T("mediaURL"), Value::string(host::Text())},
    }));
  }
  return out;
}

void addHistoryWithArray(benchmark::State& state, int count, Storage storage) {
  testing::FakeEnv env;
  FollowingLinks links(env.root.path());
  PlacedDatabase database(HUSHWALL_TEMPLATE_DB, env.root.databaseFile(), storage);
  const host::Array batch = filterRecords(records(count));
  Hushwall* model = Hushwall::sharedInstance();
  for (auto _ : state) model->addHistoryWithArray(batch);
  env.notifyCenter.deliver();
}

// The floor: the same rows stored by hand on one connection, each by its own
// INSERT in autocommit, texts already in UTF-8. Statements are finalised, or,
// with `leaveOpen`, reset and left unfinalised as the history writers must
// leave theirs, so that the connection stays open too: that separates what
// the writer's own code costs from what keeping statements and connections
// alive costs (fresh memory for every one, never reused).
void autocommitInserts(benchmark::State& state, int count, Storage storage, bool leaveOpen) {
  testing::FakeEnv env;
  FollowingLinks links(env.root.path());
  PlacedDatabase database(HUSHWALL_TEMPLATE_DB, env.root.databaseFile(), storage);
  const std::vector<Record> rows = records(count);
  const std::string path = database.file();
  for (auto _ : state) {
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    for (const Record& row : rows) {
      sqlite3_stmt* insert = nullptr;
      sqlite3_prepare_v2(db,
                         "INSERT INTO History (phoneNumber, name, message, date, blockType, "
                         "mediaType, mediaFileName, mediaURL, isMine) VALUES (?,?,?,?,?,?,?,?,?)",
                         -1, &insert, nullptr);
      sqlite3_bind_text(insert, 1, row.phoneNumber.c_str(), -1, SQLITE_TRANSIENT);
      sqlite3_bind_text(insert, 2, row.name.c_str(), -1, SQLITE_TRANSIENT);
      sqlite3_bind_text(insert, 3, row.message.c_str(), -1, SQLITE_TRANSIENT);
      sqlite3_bind_double(insert, 4, row.timestamp);
      sqlite3_bind_int(insert, 5, 0);
      sqlite3_bind_int(insert, 6, 0);
      sqlite3_bind_text(insert, 7, "", -1, SQLITE_TRANSIENT);
      sqlite3_bind_text(insert, 8, "", -1, SQLITE_TRANSIENT);
      sqlite3_bind_int(insert, 9, 0);
      sqlite3_step(insert);
      if (leaveOpen) {
        sqlite3_reset(insert);
      } else {
        sqlite3_finalize(insert);
      }
    }
    sqlite3_close(db);
  }
}

}  // namespace

void registerHistoryBenchmarks(const BenchSizes& sizes) {
  for (int rows : sizes.historyRows) {
    cachedHistoryDatabase(rows);  // built before any timing starts
    benchmark::RegisterBenchmark(names::existMessage(rows).c_str(), existMessage, rows)
        ->Unit(benchmark::kMicrosecond);
  }
  for (Storage storage : {Storage::kDisk, Storage::kMemory}) {
    benchmark::RegisterBenchmark(names::addHistoryWithArray(sizes.historyBatch, storage).c_str(),
                                 addHistoryWithArray, sizes.historyBatch, storage)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    for (bool leaveOpen : {false, true}) {
      benchmark::RegisterBenchmark(
          names::autocommitInserts(sizes.historyBatch, storage, leaveOpen).c_str(),
          autocommitInserts, sizes.historyBatch, storage, leaveOpen)
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime();
    }
  }
}

}  // namespace hushwall::bench
