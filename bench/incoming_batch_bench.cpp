// One processIncomingMessageStanzas: batch through the installed hook, against
// what cannot be avoided: the messenger's own handling of the stanzas that
// pass, the receipts for the blocked ones, and their database work (duplicate
// test, then one connection that inserts the records) done directly.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <chrono>

#include "bench/benchmark_names.h"
#include "bench/hook_benchmarks.h"
#include "bench/stanza_batches.h"
#include "simhost/host_log.h"

namespace hushwall::bench {
namespace {

using Clock = std::chrono::steady_clock;

// The history switched on and nothing else: what is measured is the filter
// and its records, not the phone's buzzer or the status bar.
const Flags kFilterOn = {{"Enabled", true},         {"SaveHistory", true},
                         {"Vibrate", false},        {"ShowStatusbarIcon", false},
                         {"DeleteMessages", false}, {"ContactsOnly", false}};

double since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void prepare(WhatsAppUnderTest& whatsapp, Storage storage) {
  whatsapp.useStorage(storage);
  whatsapp.useFlags(kFilterOn);
  whatsapp.useBlacklist(blockedSenderEntries());
}

void hooked(benchmark::State& state, WhatsAppUnderTest* whatsapp, int size, int blocked,
            Storage storage) {
  prepare(*whatsapp, storage);
  for (auto _ : state) {
    IncomingBatch batch = makeIncomingBatch(*whatsapp, size, size / blocked);
    const auto start = Clock::now();
    whatsapp->app().send(whatsapp->connection(), "processIncomingMessageStanzas:", {batch.all});
    state.SetIterationTime(since(start));
    const simhost::HostLog& log = simhost::hostLog();
    if (log.delivered.size() != 1 || log.delivered[0].size() != batch.passed.array()->size() ||
        log.receipts.size() != 1 || log.receipts[0].size() != batch.blocked.array()->size()) {
      state.SkipWithError("the hook did not split the batch");
      return;
    }
    simhost::hostLog() = simhost::HostLog{};
  }
}

// The floor, by hand: the same SQL the history uses, on the same file, with
// the texts already in UTF-8. The inserts' statements are finalised, or, with
// `leaveOpen`, reset and left unfinalised as the history writer must leave
// them (so that connection stays open too). Answers how many rows it stored.
int databaseWorkDirectly(const std::string& path, const std::vector<BlockedText>& blocked,
                         bool leaveOpen) {
  for (const BlockedText& message : blocked) {
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    sqlite3_stmt* query = nullptr;
    sqlite3_prepare_v2(db,
                       "SELECT date FROM History WHERE phoneNumber = ? AND message = ? "
                       "ORDER BY date DESC LIMIT 1",
                       -1, &query, nullptr);
    sqlite3_bind_text(query, 1, message.number.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(query, 2, message.text.c_str(), -1, SQLITE_TRANSIENT);
    while (sqlite3_step(query) == SQLITE_ROW) benchmark::DoNotOptimize(sqlite3_column_double(query, 0));
    sqlite3_finalize(query);
    sqlite3_close(db);
  }
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  int stored = 0;
  for (const BlockedText& message : blocked) {
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(db,
                       "INSERT INTO History (phoneNumber, name, message, date, blockType, "
                       "mediaType, mediaFileName, mediaURL, isMine) VALUES (?,?,?,?,?,?,?,?,?)",
                       -1, &insert, nullptr);
    sqlite3_bind_text(insert, 1, message.number.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(insert, 2, message.name.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(insert, 3, message.text.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_double(insert, 4, static_cast<float>(message.timestamp));
    sqlite3_bind_int(insert, 5, 0);
    sqlite3_bind_int(insert, 6, 0);
    sqlite3_bind_text(insert, 7, "", -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(insert, 8, "", -1, SQLITE_TRANSIENT);
    sqlite3_bind_int(insert, 9, 0);
    if (sqlite3_step(insert) == SQLITE_DONE) ++stored;
    if (leaveOpen) {
      sqlite3_reset(insert);
    } else {
      sqlite3_finalize(insert);
    }
  }
  sqlite3_close(db);
  return stored;
}

void originalPlusDatabase(benchmark::State& state, WhatsAppUnderTest* whatsapp, int size,
                          int blocked, Storage storage, bool leaveOpen) {
  prepare(*whatsapp, storage);
  const std::string path = whatsapp->databasePath();
  for (auto _ : state) {
    IncomingBatch batch = makeIncomingBatch(*whatsapp, size, size / blocked);
    const auto start = Clock::now();
    whatsapp->hostDelivery()(whatsapp->connection(), "processIncomingMessageStanzas:",
                             {batch.passed});
    whatsapp->app().send(whatsapp->connection(), "internalSendDeliveryReceiptsForStanzas:",
                         {batch.blocked});
    const int stored = databaseWorkDirectly(path, batch.blockedTexts, leaveOpen);
    state.SetIterationTime(since(start));
    if (stored != blocked) {
      state.SkipWithError("the direct inserts did not store every row");
      return;
    }
    simhost::hostLog() = simhost::HostLog{};
  }
}

}  // namespace

void registerIncomingBatchBenchmarks(WhatsAppUnderTest& whatsapp, const BenchSizes& sizes) {
  for (Storage storage : {Storage::kDisk, Storage::kMemory}) {
    benchmark::RegisterBenchmark(names::incomingHooked(sizes.incomingBatch, storage).c_str(),
                                 hooked, &whatsapp, sizes.incomingBatch, sizes.incomingBlocked,
                                 storage)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    for (bool leaveOpen : {false, true}) {
      benchmark::RegisterBenchmark(
          names::incomingDirect(sizes.incomingBatch, storage, leaveOpen).c_str(),
          originalPlusDatabase, &whatsapp, sizes.incomingBatch, sizes.incomingBlocked, storage,
          leaveOpen)
          ->UseManualTime()
          ->Unit(benchmark::kMillisecond);
    }
  }
}

}  // namespace hushwall::bench
