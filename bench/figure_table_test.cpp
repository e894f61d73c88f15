#include "bench/figure_table.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "bench/benchmark_names.h"

namespace hushwall::bench {
namespace {

void add(BenchResults& results, const std::string& name, std::vector<double> seconds) {
  for (std::size_t i = 0; i < seconds.size(); ++i) {
    results.runs[name][static_cast<int>(i)].seconds = seconds[i];
  }
}

const TableRow& rowStarting(const std::vector<TableRow>& rows, const std::string& start) {
  auto found = std::find_if(rows.begin(), rows.end(),
                            [&](const TableRow& r) { return r.figure.rfind(start, 0) == 0; });
  if (found == rows.end()) throw std::runtime_error("no row " + start);
  return *found;
}

TEST(FigureTableTest, GoalsAreJudgedOnThePairedRatioAndMissingOrFailedFiguresShow) {
  const BenchSizes sizes = benchSizes(true);
  BenchResults results;
  add(results, names::contactsChanged(sizes.blacklistRows), {3e-3, 3e-3, 3e-3});
  add(results, names::bareSelect(sizes.blacklistRows), {2e-3, 2e-3, 2e-3});
  add(results, names::addHistoryWithArray(sizes.historyBatch, Storage::kDisk), {1.3, 1.0});
  add(results, names::autocommitInserts(sizes.historyBatch, Storage::kDisk), {1.0, 1.0});
  const int smallest = sizes.historyRows.front(), largest = sizes.historyRows.back();
  add(results, names::existMessage(smallest), {1e-5, 1e-5});
  add(results, names::existMessage(largest), {2e-5, 2e-5});
  results.errors[names::purge(sizes.purgeNumbers, sizes.chatStorageRows)] = "boom";
  add(results, names::endToEnd(sizes.endToEndStanzas, true, Storage::kDisk), {0.5});
  add(results, names::endToEnd(sizes.endToEndStanzas, false, Storage::kDisk), {0.002});
  auto rows = figureTable(results, sizes);

  const TableRow& contacts = rowStarting(rows, "`ContactsChanged`");
  EXPECT_EQ(contacts.value, "3.00 ms");
  EXPECT_EQ(contacts.baseline, "a bare SELECT of the same rows: 2.00 ms");
  EXPECT_EQ(contacts.ratio, "1.50x");
  EXPECT_EQ(contacts.goal, "≤ 1.50x");
  EXPECT_EQ(contacts.met, "yes");  // the goal's bound is included
  EXPECT_EQ(rowStarting(rows, "`addHistoryWithArray`").ratio, "1.15x");
  EXPECT_EQ(rowStarting(rows, "`addHistoryWithArray`").met, "yes");

  const TableRow& first = rowStarting(rows, "`existMessage` with " + formatCount(smallest) + " ");
  EXPECT_EQ(first.ratio, "1.00x");
  EXPECT_EQ(first.met, "—");  // the baseline against itself is no goal
  const TableRow& last = rowStarting(rows, "`existMessage` with " + formatCount(largest) + " ");
  EXPECT_EQ(last.ratio, "2.00x");
  EXPECT_EQ(last.met, "NO");

  EXPECT_EQ(rowStarting(rows, "`phoneNumberBlacklisted`").value, "not run");
  EXPECT_EQ(rowStarting(rows, "purge").value, "failed: boom");
  EXPECT_EQ(rowStarting(rows, "purge").met, "NO");
  const TableRow& endToEnd = rowStarting(rows, "end to end");
  EXPECT_EQ(endToEnd.value, std::to_string(sizes.endToEndStanzas * 2) + " stanzas/s");
  EXPECT_EQ(endToEnd.ratio, "250x the time");
  EXPECT_EQ(endToEnd.met, "—");
}

TEST(FigureTableTest, Formatting) {
  for (const auto& [count, text] : std::vector<std::pair<int, std::string>>{
           {0, "0"}, {999, "999"}, {1000, "1,000"}, {1000000, "1,000,000"}, {-12345, "-12,345"}}) {
    EXPECT_EQ(formatCount(count), text);
  }
  // The unit changes at the boundary, not one digit too late.
  for (const auto& [seconds, text] : std::vector<std::pair<double, std::string>>{
           {12.3e-9, "12.3 ns"}, {4.56e-6, "4.56 µs"}, {0.789, "789 ms"}, {1.2, "1.20 s"},
           {1e-3, "1.00 ms"}}) {
    EXPECT_EQ(formatSeconds(seconds), text);
  }
}

}  // namespace
}  // namespace hushwall::bench
