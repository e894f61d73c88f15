// The table of figures: each figure of the benchmark suite with its
// baseline, its median value, the pairwise ratio, the goal and whether it was
// met. Rows follow the order in which the figures are published.
#ifndef HUSHWALL_BENCH_FIGURE_TABLE_H_
#define HUSHWALL_BENCH_FIGURE_TABLE_H_

#include <string>
#include <vector>

#include "bench/bench_results.h"
#include "bench/bench_sizes.h"

namespace hushwall::bench {

struct TableRow {
  std::string figure;
  std::string baseline;  // what the figure is measured against, and its value
  std::string value;
  std::string ratio;
  std::string goal;
  std::string met;  // "yes", "NO", or "—" where there is only something to report
};

std::vector<TableRow> figureTable(const BenchResults& results, const BenchSizes& sizes);

// A Markdown table with a header row.
std::string markdownTable(const std::vector<TableRow>& rows);

// "12.3 ns", "4.56 µs", "789 ms", "1.20 s": three significant digits.
std::string formatSeconds(double seconds);
// "10,000".
std::string formatCount(long long count);

}  // namespace hushwall::bench

#endif  // HUSHWALL_BENCH_FIGURE_TABLE_H_
