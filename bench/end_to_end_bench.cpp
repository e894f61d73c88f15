// End to end on the simulated device: a stream of incoming stanzas, handed to
// the messenger in batches, one in ten from a blacklisted sender, with
// Hushwall enabled (history, vibration and the status-bar request on, as a
// user who blocks someone would have it) and with it switched off in its
// settings. The figure is stanzas per second.
#include <benchmark/benchmark.h>

#include <chrono>
#include <vector>

#include "bench/benchmark_names.h"
#include "bench/hook_benchmarks.h"
#include "bench/stanza_batches.h"
#include "simhost/host_log.h"

namespace hushwall::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kBlockedEvery = 10;

Flags flags(bool enabled) {
  return {{"Enabled", enabled},      {"SaveHistory", true},     {"Vibrate", true},
          {"ShowStatusbarIcon", true}, {"DeleteMessages", false}, {"ContactsOnly", false}};
}

void endToEnd(benchmark::State& state, WhatsAppUnderTest* whatsapp, int stanzas, int batchSize,
              bool enabled, Storage storage) {
  whatsapp->useStorage(storage);
  whatsapp->useFlags(flags(enabled));
  whatsapp->useBlacklist(blockedSenderEntries());
  for (auto _ : state) {
    std::vector<host::Value> batches;
    for (int sent = 0; sent < stanzas; sent += batchSize) {
      batches.push_back(makeIncomingBatch(*whatsapp, batchSize, kBlockedEvery).all);
    }
    const auto start = Clock::now();
    for (const host::Value& batch : batches) {
      whatsapp->app().send(whatsapp->connection(), "processIncomingMessageStanzas:", {batch});
    }
    state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    // The app's main loop gets its turn between bursts, as it would.
    whatsapp->app().device().notifyCenter().processPending();
    simhost::hostLog() = simhost::HostLog{};
  }
  state.SetItemsProcessed(state.iterations() * stanzas);
}

}  // namespace

void registerEndToEndBenchmarks(WhatsAppUnderTest& whatsapp, const BenchSizes& sizes) {
  for (Storage storage : {Storage::kDisk, Storage::kMemory}) {
    for (bool enabled : {true, false}) {
      benchmark::RegisterBenchmark(
          names::endToEnd(sizes.endToEndStanzas, enabled, storage).c_str(), endToEnd, &whatsapp,
          sizes.endToEndStanzas, sizes.endToEndBatch, enabled, storage)
          ->UseManualTime()
          ->Unit(benchmark::kMillisecond);
    }
  }
}

}  // namespace hushwall::bench
