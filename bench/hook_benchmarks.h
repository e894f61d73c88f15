// The benchmarks of the installed hooks, run inside the simulated WhatsApp of
// hushwall-bench-hooks. Each group registers its benchmarks under the names
// of benchmark_names.h.
#ifndef HUSHWALL_BENCH_HOOK_BENCHMARKS_H_
#define HUSHWALL_BENCH_HOOK_BENCHMARKS_H_

#include "bench/bench_sizes.h"
#include "bench/whatsapp_under_test.h"

namespace hushwall::bench {

// One batch through the hook against the original plus the blocked messages'
// database work done directly.
void registerIncomingBatchBenchmarks(WhatsAppUnderTest& whatsapp, const BenchSizes& sizes);
// Many batches, Hushwall enabled against disabled.
void registerEndToEndBenchmarks(WhatsAppUnderTest& whatsapp, const BenchSizes& sizes);
// The purge of blacklisted chats on the way to the background.
void registerPurgeBenchmarks(WhatsAppUnderTest& whatsapp, const BenchSizes& sizes);

}  // namespace hushwall::bench

#endif  // HUSHWALL_BENCH_HOOK_BENCHMARKS_H_
