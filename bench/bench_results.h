// The runs of a benchmark program, read from its JSON output, and the two
// statistics the table is made of: the median over repetitions, and the
// median of ratios taken pair by pair (repetition i of a figure against
// repetition i of its baseline, which ran in the same program run, right
// after it).
#ifndef HUSHWALL_BENCH_BENCH_RESULTS_H_
#define HUSHWALL_BENCH_BENCH_RESULTS_H_

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace hushwall::bench {

// One repetition of one benchmark.
struct Repetition {
  double seconds = 0;  // time per iteration (wall or manual)
  std::map<std::string, double> counters;
};

// Every benchmark's repetitions by repetition index, and the errors of those
// that failed.
struct BenchResults {
  std::map<std::string, std::map<int, Repetition>> runs;
  std::map<std::string, std::string> errors;
};

// Adds the per-repetition runs of one program's JSON output, from round
// `round` of the suite: a run is filed under round * kRepetitionsPerRound +
// its repetition index, so that the runs of one round pair with each other.
// Aggregates are skipped, and the suffixes Google Benchmark appends to a name
// ("/manual_time", "/real_time", ...) are taken off, so that a benchmark is
// found by the name it was registered under.
inline constexpr int kRepetitionsPerRound = 1000;
void addResults(const nlohmann::json& output, BenchResults& results, int round = 0);

std::optional<double> median(std::vector<double> values);

// The median time per iteration of `name`; none when it did not run.
std::optional<double> medianSeconds(const BenchResults& results, const std::string& name);
// The median of a counter over the repetitions of `name`.
std::optional<double> medianCounter(const BenchResults& results, const std::string& name,
                                    const std::string& counter);
// The median over repetitions present in both of value time / baseline time.
std::optional<double> pairedRatio(const BenchResults& results, const std::string& value,
                                  const std::string& baseline);

}  // namespace hushwall::bench

#endif  // HUSHWALL_BENCH_BENCH_RESULTS_H_
