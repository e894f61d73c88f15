// hushwall-bench-model: the model's figures, measured on the logic linked
// into this process. `--tiny` picks the CI sizes; every other flag is Google
// Benchmark's.
#include <benchmark/benchmark.h>

#include "bench/bench_sizes.h"
#include "bench/model_benchmarks.h"

int main(int argc, char** argv) {
  using namespace hushwall::bench;
  const BenchSizes sizes = benchSizes(takeTinyFlag(argc, argv));
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  registerBlacklistBenchmarks(sizes);
  registerHistoryBenchmarks(sizes);
  registerHistoryWritesBenchmarks(sizes);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
