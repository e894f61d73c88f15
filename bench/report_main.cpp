// hushwall-bench-report: reads the JSON output of the benchmark programs and
// prints the table of figures in Markdown.
//
//   hushwall-bench-report [--tiny] RESULTS.json...
//
// Each file is the output of one run of one program (one round).
//
// Exits 0 when every figure was measured (whether or not its goal was met),
// 1 on bad input, 2 when some figure did not run or failed.
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "bench/bench_results.h"
#include "bench/figure_table.h"

int main(int argc, char** argv) {
  using namespace hushwall::bench;
  bool tiny = false;
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--tiny") {
      tiny = true;
    } else {
      files.push_back(arg);
    }
  }
  if (files.empty()) {
    std::cerr << "usage: hushwall-bench-report [--tiny] RESULTS.json...\n";
    return 1;
  }
  BenchResults results;
  // Each file is one run of one program: a round of its own, whose figures
  // pair with the baselines that ran alongside them.
  for (std::size_t round = 0; round < files.size(); ++round) {
    const std::string& file = files[round];
    std::ifstream in(file);
    nlohmann::json output = nlohmann::json::parse(in, nullptr, false);
    if (!in || output.is_discarded()) {
      std::cerr << "hushwall-bench-report: cannot read " << file << "\n";
      return 1;
    }
    addResults(output, results, static_cast<int>(round));
  }
  const std::vector<TableRow> rows = figureTable(results, benchSizes(tiny));
  std::cout << markdownTable(rows);
  int missing = 0;
  for (const TableRow& row : rows) {
    if (row.value == "not run" || row.value.rfind("failed", 0) == 0) ++missing;
  }
  if (missing > 0) {
    std::cerr << "hushwall-bench-report: " << missing << " figure(s) not measured\n";
    return 2;
  }
  return 0;
}
