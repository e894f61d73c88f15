// The benchmarks of the model, run in a process that links the logic
// directly (hushwall-bench-model). Each group registers its benchmarks under
// the names of benchmark_names.h.
#ifndef HUSHWALL_BENCH_MODEL_BENCHMARKS_H_
#define HUSHWALL_BENCH_MODEL_BENCHMARKS_H_

#include "bench/bench_sizes.h"

namespace hushwall::bench {

// phoneNumberBlacklisted against a bare loop of literal searches;
// ContactsChanged against a bare SELECT.
void registerBlacklistBenchmarks(const BenchSizes& sizes);
// existMessage as the History grows; addHistoryWithArray against autocommit
// inserts.
void registerHistoryBenchmarks(const BenchSizes& sizes);
// What the history writers leave behind in the process.
void registerHistoryWritesBenchmarks(const BenchSizes& sizes);

}  // namespace hushwall::bench

#endif  // HUSHWALL_BENCH_MODEL_BENCHMARKS_H_
