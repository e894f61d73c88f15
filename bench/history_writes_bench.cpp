// What the history writers leave behind: every write statement is reset but
// never finalised, so each writing connection stays open for the rest of the
// process. This measures how much that is after many writes: open file
// descriptors and resident memory, per write.
//
// Each measurement runs in a child process of its own, so that what earlier
// benchmarks left open does not count, and the database lives in memory:
// the figure is about what the process holds, and ten thousand synced
// commits on disk would only make it slow to get.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "bench/benchmark_names.h"
#include "bench/database_placement.h"
#include "bench/model_benchmarks.h"
#include "bench/process_resources.h"
#include "model/hushwall.h"
#include "testing/fake_env.h"

namespace hushwall::bench {
namespace {

using host::Value;

constexpr int kBatch = 100;

struct WritesOutcome {
  ProcessResources before;
  ProcessResources after;
  long rowsStored = 0;
  double seconds = 0;
};

// The rows of the History, through a connection opened before the writes:
// should the writes use up every descriptor the process may have (past that
// point they are lost without a word, as every failed open is), the count
// can still be taken.
class HistoryCounter {
 public:
  explicit HistoryCounter(const std::string& file) {
    sqlite3_open_v2(file.c_str(), &db_, SQLITE_OPEN_READONLY, nullptr);
  }
  ~HistoryCounter() { sqlite3_close(db_); }
  long rows() const {
    long rows = -1;
    sqlite3_stmt* count = nullptr;
    if (sqlite3_prepare_v2(db_, "SELECT count(*) FROM History", -1, &count, nullptr) == SQLITE_OK &&
        sqlite3_step(count) == SQLITE_ROW) {
      rows = sqlite3_column_int64(count, 0);
    }
    sqlite3_finalize(count);
    return rows;
  }

 private:
  sqlite3* db_ = nullptr;
};

Value record(int i) {
  return Value::dictionary({
      {host::T("phoneNumber"), Value::string(host::T("34612001000"))},
      {host::T("name"), Value::string(host::T("Blocked sender"))},
      {host::T("message"), Value::string(host::T("Message " + std::to_string(i)))},
      {host::T("timestamp"), Value::real(static_cast<float>(1700000000.0 + i))},
      {host::T("isMine"), Value::boolean(false)},
      {host::T("mediaType"), Value::integer(0)},
      {host::T("mediaFileName"), Value::string(host::Text())},
      {host::T("mediaURL"), Value::string(host::Text())},
  });
}

// `writes` rows, one call each (the single-row writer, as the outgoing record
// and the banner hook use it) or in batches of a hundred (the incoming
// filter's writer).
WritesOutcome writeHistory(int writes, bool batched) {
  testing::FakeEnv env;
  FollowingLinks links(env.root.path());
  PlacedDatabase database(HUSHWALL_TEMPLATE_DB, env.root.databaseFile(), Storage::kMemory);
  Hushwall* model = Hushwall::sharedInstance();
  host::Array batch;
  if (batched) {
    for (int i = 0; i < kBatch; ++i) batch.push_back(record(i));
  }
  HistoryCounter counter(database.file());
  WritesOutcome outcome;
  outcome.before = currentProcessResources();
  // Held during the writes and given back before the second count of
  // descriptors, which needs one of its own to list them.
  const int spare = ::open("/dev/null", O_RDONLY);
  auto start = std::chrono::steady_clock::now();
  if (batched) {
    for (int done = 0; done < writes; done += kBatch) model->addHistoryWithArray(batch);
  } else {
    for (int i = 0; i < writes; ++i) {
      model->addHistoryWithPhoneNumber(host::T("34612001000"), host::T("Me"),
                                       host::T("Message " + std::to_string(i)),
                                       1700000000.0 + i, kBLOCK_TYPE_APP, true);
    }
  }
  outcome.seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  ::close(spare);
  outcome.after = currentProcessResources();
  outcome.rowsStored = counter.rows();
  return outcome;
}

void historyWrites(benchmark::State& state, int writes, bool batched) {
  for (auto _ : state) {
    int channel[2];
    if (::pipe(channel) != 0) {
      state.SkipWithError("pipe failed");
      return;
    }
    std::fflush(nullptr);
    pid_t child = ::fork();
    if (child == 0) {
      ::close(channel[0]);
      WritesOutcome outcome = writeHistory(writes, batched);
      ssize_t written = ::write(channel[1], &outcome, sizeof outcome);
      ::_exit(written == static_cast<ssize_t>(sizeof outcome) ? 0 : 1);
    }
    ::close(channel[1]);
    WritesOutcome outcome;
    ssize_t got = ::read(channel[0], &outcome, sizeof outcome);
    ::close(channel[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (got != static_cast<ssize_t>(sizeof outcome) || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0) {
      state.SkipWithError("the writing process failed");
      return;
    }
    state.SetIterationTime(outcome.seconds);
    const double n = writes;
    state.counters["writes"] = n;
    state.counters["rows_stored"] = static_cast<double>(outcome.rowsStored);
    state.counters["fds_before"] = static_cast<double>(outcome.before.openDescriptors);
    state.counters["fds_after"] = static_cast<double>(outcome.after.openDescriptors);
    state.counters["rss_before_kib"] = static_cast<double>(outcome.before.residentKiB);
    state.counters["rss_after_kib"] = static_cast<double>(outcome.after.residentKiB);
    state.counters["fds_per_write"] =
        (outcome.after.openDescriptors - outcome.before.openDescriptors) / n;
    state.counters["kib_per_write"] = (outcome.after.residentKiB - outcome.before.residentKiB) / n;
  }
}

}  // namespace

void registerHistoryWritesBenchmarks(const BenchSizes& sizes) {
  const int writes = sizes.resourceWrites;
  for (bool batched : {false, true}) {
    benchmark::RegisterBenchmark(names::historyWrites(writes, batched ? "batch" : "single").c_str(),
                                 historyWrites, writes, batched)
        ->Iterations(1)
        ->Repetitions(1)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  }
}

}  // namespace hushwall::bench
