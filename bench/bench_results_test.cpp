#include "bench/bench_results.h"

#include <gtest/gtest.h>

namespace hushwall::bench {
namespace {

nlohmann::json run(const std::string& name, int repetition, double time, const char* unit = "ms",
                   const char* type = "iteration") {
  return {{"name", name}, {"run_name", name},        {"run_type", type},
          {"repetition_index", repetition},          {"real_time", time},
          {"cpu_time", time}, {"time_unit", unit},   {"iterations", 10}};
}

BenchResults resultsOf(std::vector<nlohmann::json> runs, BenchResults results = {}, int round = 0) {
  addResults({{"benchmarks", runs}}, results, round);
  return results;
}

TEST(BenchResultsTest, RunsAreFoundByTheirRegisteredNameCountersAndErrorsAreKept) {
  nlohmann::json counted = run("w", 0, 1.0, "s"), failed = run("f", 0, 0.0, "ns");
  counted["fds_after"] = 12.0;
  counted["label"] = "not a counter";
  failed["error_occurred"] = true;
  failed["error_message"] = "the writing process failed";
  BenchResults results = resultsOf(
      {run("a/manual_time", 0, 2.0), run("a/manual_time", 1, 4.0),
       run("a/manual_time", 0, 999.0, "ms", "aggregate"),  // aggregates are skipped
       run("b/real_time", 0, 500.0, "us"), run("c/iterations:1", 0, 3.0, "s"), counted, failed});
  EXPECT_EQ(results.runs["a"].size(), 2u);
  EXPECT_DOUBLE_EQ(*medianSeconds(results, "a"), 0.003);
  EXPECT_DOUBLE_EQ(*medianSeconds(results, "b"), 0.0005);
  EXPECT_DOUBLE_EQ(*medianSeconds(results, "c"), 3.0);
  EXPECT_FALSE(medianSeconds(results, "missing").has_value());
  EXPECT_EQ(*medianCounter(results, "w", "fds_after"), 12.0);
  EXPECT_FALSE(medianCounter(results, "w", "iterations").has_value());
  EXPECT_FALSE(medianCounter(results, "w", "label").has_value());
  EXPECT_EQ(results.errors.at("f"), "the writing process failed");
  EXPECT_EQ(results.runs.count("f"), 0u);
}

TEST(BenchResultsTest, MedianOfOddAndEvenCounts) {
  EXPECT_FALSE(median({}).has_value());
  EXPECT_EQ(*median({5.0}), 5.0);
  EXPECT_EQ(*median({9.0, 1.0, 5.0}), 5.0);
  EXPECT_EQ(*median({4.0, 1.0, 3.0, 2.0}), 2.5);
}

TEST(BenchResultsTest, RatiosArePairedByRepetitionWithinARoundNotByMedians) {
  // Baseline and figure drift together: each pair is 2x, while the ratio of
  // the medians (4 / 1.5) would not be. Repetition 3 of the baseline is
  // missing: no pair.
  BenchResults results = resultsOf({run("fig", 0, 2.0), run("fig", 1, 4.0), run("fig", 2, 200.0),
                                    run("fig", 3, 6.0), run("base", 0, 1.0), run("base", 1, 2.0),
                                    run("base", 2, 100.0), run("base", 4, 1.0)});
  EXPECT_DOUBLE_EQ(*pairedRatio(results, "fig", "base"), 2.0);
  EXPECT_FALSE(pairedRatio(results, "fig", "nothing").has_value());

  // Each round ran once (repetition 0); the second round ran on a slower
  // machine, both sides alike; in the third no baseline ran.
  results = resultsOf({run("fig", 0, 3.0), run("base", 0, 1.0)});
  results = resultsOf({run("fig", 0, 30.0), run("base", 0, 10.0)}, results, 1);
  results = resultsOf({run("fig", 0, 300.0)}, results, 2);
  EXPECT_EQ(results.runs["fig"].size(), 3u);
  EXPECT_DOUBLE_EQ(*medianSeconds(results, "fig"), 0.03);
  EXPECT_DOUBLE_EQ(*pairedRatio(results, "fig", "base"), 3.0);
}

}  // namespace
}  // namespace hushwall::bench
