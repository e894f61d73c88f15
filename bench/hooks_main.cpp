// hushwall-bench-hooks: the hooks' figures, measured in a simulated WhatsApp
// into which the library is loaded as the device loads it. This program links
// only the host side, never the logic. `--tiny` picks the CI sizes; every
// other flag is Google Benchmark's.
#include <benchmark/benchmark.h>

#include "bench/bench_sizes.h"
#include "bench/hook_benchmarks.h"
#include "bench/whatsapp_under_test.h"

int main(int argc, char** argv) {
  using namespace hushwall::bench;
  const BenchSizes sizes = benchSizes(takeTinyFlag(argc, argv));
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  WhatsAppUnderTest whatsapp(HUSHWALL_LIBRARY_PATH);
  registerIncomingBatchBenchmarks(whatsapp, sizes);
  registerEndToEndBenchmarks(whatsapp, sizes);
  registerPurgeBenchmarks(whatsapp, sizes);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
