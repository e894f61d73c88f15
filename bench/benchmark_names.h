// The names of the benchmarks. The programs register them under these names
// and the report looks them up by the same names, so a figure and its
// baseline can never drift apart.
#ifndef HUSHWALL_BENCH_BENCHMARK_NAMES_H_
#define HUSHWALL_BENCH_BENCHMARK_NAMES_H_

#include <string>

#include "bench/bench_sizes.h"

namespace hushwall::bench::names {

inline std::string sized(const std::string& what, const std::string& unit, int size) {
  return what + "/" + unit + ":" + std::to_string(size);
}

inline std::string phoneNumberBlacklisted(int entries) {
  return sized("phoneNumberBlacklisted", "entries", entries);
}
inline std::string literalSearchLoop(int entries) {
  return sized("literalSearchLoop", "entries", entries);
}

inline std::string existMessage(int rows) { return sized("existMessage", "rows", rows); }

inline std::string addHistoryWithArray(int records, Storage storage) {
  return sized("addHistoryWithArray", "records", records) + "/" + storageName(storage);
}
// leftOpen: statements reset and never finalised, as the history writers do.
inline std::string autocommitInserts(int records, Storage storage, bool leftOpen = false) {
  return sized("autocommitInserts", "records", records) + "/" + storageName(storage) +
         (leftOpen ? "/left-open" : "");
}

inline std::string contactsChanged(int rows) { return sized("ContactsChanged", "rows", rows); }
inline std::string bareSelect(int rows) { return sized("bareSelect", "rows", rows); }

inline std::string purge(int numbers, int rows) {
  return sized(sized("purge", "numbers", numbers), "rows", rows);
}
inline std::string purgeSearches(int numbers, int rows) {
  return sized(sized("purgeSearches", "numbers", numbers), "rows", rows);
}

// writer: "single" (one row per call) or "batch" (addHistoryWithArray).
inline std::string historyWrites(int writes, const std::string& writer) {
  return sized("historyWrites", "writes", writes) + "/" + writer;
}

inline std::string incomingHooked(int batch, Storage storage) {
  return sized("processIncomingMessageStanzas", "batch", batch) + "/hooked/" +
         storageName(storage);
}
inline std::string incomingDirect(int batch, Storage storage, bool leftOpen = false) {
  return sized("processIncomingMessageStanzas", "batch", batch) + "/original+database/" +
         storageName(storage) + (leftOpen ? "/left-open" : "");
}

inline std::string endToEnd(int stanzas, bool enabled, Storage storage) {
  return sized("endToEnd", "stanzas", stanzas) + (enabled ? "/enabled/" : "/disabled/") +
         storageName(storage);
}

}  // namespace hushwall::bench::names

#endif  // HUSHWALL_BENCH_BENCHMARK_NAMES_H_
