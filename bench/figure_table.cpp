#include "bench/figure_table.h"

#include <cmath>
#include <cstdio>
#include <functional>
#include <optional>

#include "bench/benchmark_names.h"

namespace hushwall::bench {
namespace {

const char kNone[] = "—";

std::string threeDigits(double value) {
  char buffer[32];
  const double magnitude = std::fabs(value);
  const char* format = magnitude >= 100 ? "%.0f" : magnitude >= 10 ? "%.1f" : "%.2f";
  std::snprintf(buffer, sizeof buffer, format, value);
  return buffer;
}

std::string formatRatio(double ratio) { return threeDigits(ratio) + "x"; }

std::string whereStored(Storage storage) {
  return storage == Storage::kDisk ? "database on disk" : "database in memory (tmpfs)";
}

// A figure measured as time against a baseline time, with a goal on their
// ratio (none: the ratio is only reported).
TableRow timedAgainst(const BenchResults& results, const std::string& figure,
                      const std::string& name, const std::string& baselineText,
                      const std::string& baselineName, std::optional<double> atMost) {
  TableRow row{figure, baselineText, "not run", kNone, kNone, kNone};
  if (atMost) row.goal = "≤ " + threeDigits(*atMost) + "x";
  for (const std::string& n : {name, baselineName}) {
    auto error = results.errors.find(n);
    if (error != results.errors.end()) {
      row.value = "failed: " + error->second;
      row.met = atMost ? "NO" : kNone;
      return row;
    }
  }
  auto value = medianSeconds(results, name);
  auto baseline = medianSeconds(results, baselineName);
  if (baseline) row.baseline += ": " + formatSeconds(*baseline);
  if (!value) return row;
  row.value = formatSeconds(*value);
  if (auto ratio = pairedRatio(results, name, baselineName)) {
    row.ratio = formatRatio(*ratio);
    if (atMost) row.met = *ratio <= *atMost ? "yes" : "NO";
  }
  return row;
}

TableRow historyWritesRow(const BenchResults& results, int writes, const std::string& writer,
                          const std::string& how) {
  const std::string name = names::historyWrites(writes, writer);
  TableRow row{"resources after " + formatCount(writes) + " history writes, " + how,
               "the process before the writes", "not run", kNone, "report", kNone};
  auto error = results.errors.find(name);
  if (error != results.errors.end()) {
    row.value = "failed: " + error->second;
    return row;
  }
  auto counter = [&](const char* key) { return medianCounter(results, name, key); };
  auto fdsBefore = counter("fds_before"), fdsAfter = counter("fds_after");
  auto rssBefore = counter("rss_before_kib"), rssAfter = counter("rss_after_kib");
  auto fdsPerWrite = counter("fds_per_write"), kibPerWrite = counter("kib_per_write");
  auto stored = counter("rows_stored");
  if (!fdsBefore || !fdsAfter || !rssBefore || !rssAfter || !fdsPerWrite || !kibPerWrite ||
      !stored) {
    return row;
  }
  row.baseline += ": " + formatCount(std::llround(*fdsBefore)) + " fds, " +
                  threeDigits(*rssBefore / 1024.0) + " MiB resident";
  char perWrite[64];
  std::snprintf(perWrite, sizeof perWrite, "%.3f fd and %.1f KiB", *fdsPerWrite, *kibPerWrite);
  row.value = std::string("+") + perWrite + " per write (after: " +
              formatCount(std::llround(*fdsAfter)) + " fds, " + threeDigits(*rssAfter / 1024.0) +
              " MiB; " + formatCount(std::llround(*stored)) + " rows stored)";
  return row;
}

TableRow endToEndRow(const BenchResults& results, const BenchSizes& sizes, Storage storage) {
  const std::string enabled = names::endToEnd(sizes.endToEndStanzas, true, storage);
  const std::string disabled = names::endToEnd(sizes.endToEndStanzas, false, storage);
  TableRow row{"end to end: " + formatCount(sizes.endToEndStanzas) + " incoming stanzas in batches of " +
                   std::to_string(sizes.endToEndBatch) + ", 10% blacklisted, " +
                   whereStored(storage),
               "the same with Hushwall disabled", "not run", kNone, "report stanzas/s and ratio",
               kNone};
  for (const std::string& n : {enabled, disabled}) {
    auto error = results.errors.find(n);
    if (error != results.errors.end()) {
      row.value = "failed: " + error->second;
      return row;
    }
  }
  auto rate = [&](const std::string& name) -> std::optional<double> {
    auto seconds = medianSeconds(results, name);
    if (!seconds || *seconds <= 0) return std::nullopt;
    return sizes.endToEndStanzas / *seconds;
  };
  auto off = rate(disabled);
  if (off) row.baseline += ": " + formatCount(std::llround(*off)) + " stanzas/s";
  auto on = rate(enabled);
  if (!on) return row;
  row.value = formatCount(std::llround(*on)) + " stanzas/s";
  if (auto ratio = pairedRatio(results, enabled, disabled)) {
    row.ratio = formatRatio(*ratio) + " the time";
  }
  return row;
}

}  // namespace

std::string formatSeconds(double seconds) {
  const double magnitude = std::fabs(seconds);
  if (magnitude >= 1) return threeDigits(seconds) + " s";
  if (magnitude >= 1e-3) return threeDigits(seconds * 1e3) + " ms";
  if (magnitude >= 1e-6) return threeDigits(seconds * 1e6) + " µs";
  return threeDigits(seconds * 1e9) + " ns";
}

std::string formatCount(long long count) {
  std::string digits = std::to_string(count < 0 ? -count : count);
  std::string out;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) out += ',';
    out += digits[i];
  }
  return (count < 0 ? "-" : "") + out;
}

std::vector<TableRow> figureTable(const BenchResults& results, const BenchSizes& sizes) {
  std::vector<TableRow> rows;

  for (int entries : sizes.blacklistEntries) {
    rows.push_back(timedAgainst(
        results, "`phoneNumberBlacklisted` of a number that matches nothing, " +
                     formatCount(entries) + " entries",
        names::phoneNumberBlacklisted(entries), "bare loop of literal searches",
        names::literalSearchLoop(entries), 2.0));
  }

  for (Storage storage : {Storage::kDisk, Storage::kMemory}) {
    rows.push_back(timedAgainst(
        results, "one `processIncomingMessageStanzas:` batch of " +
                     std::to_string(sizes.incomingBatch) + " stanzas, " +
                     std::to_string(sizes.incomingBlocked) + " blacklisted, through the hook, " +
                     whereStored(storage),
        names::incomingHooked(sizes.incomingBatch, storage),
        "original implementation + receipts + the blocked ones' database work done directly",
        names::incomingDirect(sizes.incomingBatch, storage), 1.5));
    rows.push_back(timedAgainst(
        results, "the same batch through the hook, " + whereStored(storage) +
                     ", against database work left open like the history writer's",
        names::incomingHooked(sizes.incomingBatch, storage),
        "the same direct work, the inserts' statements reset and never finalised",
        names::incomingDirect(sizes.incomingBatch, storage, true), 1.5));
  }

  const int smallest = sizes.historyRows.front();
  for (int historyRows : sizes.historyRows) {
    rows.push_back(timedAgainst(
        results, "`existMessage` with " + formatCount(historyRows) + " History rows",
        names::existMessage(historyRows), "the same call at " + formatCount(smallest) + " rows",
        names::existMessage(smallest),
        historyRows == smallest ? std::nullopt : std::optional<double>(1.5)));
  }

  for (Storage storage : {Storage::kDisk, Storage::kMemory}) {
    rows.push_back(timedAgainst(
        results, "`addHistoryWithArray` of " + std::to_string(sizes.historyBatch) + " records, " +
                     whereStored(storage),
        names::addHistoryWithArray(sizes.historyBatch, storage),
        "raw SQLite autocommit inserts, one statement each",
        names::autocommitInserts(sizes.historyBatch, storage), 1.2));
    // The writers must leave every statement unfinalised and so every
    // connection open; this row shows the writer's own cost once that is in
    // the baseline too.
    rows.push_back(timedAgainst(
        results, "`addHistoryWithArray` of " + std::to_string(sizes.historyBatch) + " records, " +
                     whereStored(storage) + ", against inserts left open like the writers'",
        names::addHistoryWithArray(sizes.historyBatch, storage),
        "the same raw inserts, statements reset and never finalised",
        names::autocommitInserts(sizes.historyBatch, storage, true), 1.2));
  }

  rows.push_back(timedAgainst(
      results, "`ContactsChanged` with " + formatCount(sizes.blacklistRows) + " Blacklist rows",
      names::contactsChanged(sizes.blacklistRows), "a bare SELECT of the same rows",
      names::bareSelect(sizes.blacklistRows), 1.5));

  {
    const std::string name = names::purge(sizes.purgeNumbers, sizes.chatStorageRows);
    TableRow row = timedAgainst(
        results, "purge of " + std::to_string(sizes.purgeNumbers) +
                     " blacklisted numbers over a ChatStorage.sqlite of " +
                     formatCount(sizes.chatStorageRows) + " message rows",
        name, "(no baseline; for scale, one LIKE query per number run directly)",
        names::purgeSearches(sizes.purgeNumbers, sizes.chatStorageRows), std::nullopt);
    row.goal = "< 1 s wall";
    if (auto seconds = medianSeconds(results, name)) row.met = *seconds < 1.0 ? "yes" : "NO";
    if (results.errors.count(name)) row.met = "NO";
    rows.push_back(row);
  }

  rows.push_back(historyWritesRow(results, sizes.resourceWrites, "single",
                                  "one row per call (single-row writer)"));
  rows.push_back(historyWritesRow(results, sizes.resourceWrites, "batch",
                                  "in batches of 100 (`addHistoryWithArray`)"));

  for (Storage storage : {Storage::kDisk, Storage::kMemory}) {
    rows.push_back(endToEndRow(results, sizes, storage));
  }
  return rows;
}

std::string markdownTable(const std::vector<TableRow>& rows) {
  std::string out = "| Figure | Baseline | Value | Ratio | Goal | Met |\n";
  out += "|---|---|---|---|---|---|\n";
  for (const TableRow& row : rows) {
    out += "| " + row.figure + " | " + row.baseline + " | " + row.value + " | " + row.ratio +
           " | " + row.goal + " | " + row.met + " |\n";
  }
  return out;
}

}  // namespace hushwall::bench
