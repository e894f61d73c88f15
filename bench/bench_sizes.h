// How much data each benchmark works on. The full run uses the sizes that the
// published figures are about; the tiny run, for CI, only shows that every
// benchmark still builds and runs, and takes seconds.
//
// The benchmark programs name their benchmarks from these sizes and the
// report finds them by the same names, so both read them from here.
#ifndef HUSHWALL_BENCH_BENCH_SIZES_H_
#define HUSHWALL_BENCH_BENCH_SIZES_H_

#include <string>
#include <vector>

namespace hushwall::bench {

struct BenchSizes {
  // phoneNumberBlacklisted: entries in the in-memory blacklist.
  std::vector<int> blacklistEntries;
  // existMessage: History rows; the first size is the others' baseline.
  std::vector<int> historyRows;
  // addHistoryWithArray: records in one batch.
  int historyBatch;
  // ContactsChanged: rows of the Blacklist table.
  int blacklistRows;
  // The purge: blacklisted numbers, and message rows in ChatStorage.sqlite.
  int purgeNumbers;
  int chatStorageRows;
  // History writes whose left-open connections are counted.
  int resourceWrites;
  // One processIncomingMessageStanzas: batch, and how many of it are blocked.
  int incomingBatch;
  int incomingBlocked;
  // End to end: stanzas in all, in batches of this size, every tenth blocked.
  int endToEndStanzas;
  int endToEndBatch;
};

inline BenchSizes benchSizes(bool tiny) {
  if (tiny) return {{10, 100, 1000}, {100, 1000, 10000}, 20, 1000, 10, 2000, 200, 100, 10, 200, 50};
  return {{10, 1000, 10000}, {1000, 100000, 1000000}, 100, 10000, 100, 1000000, 10000, 100, 10,
          1000, 50};
}

// Takes "--tiny" out of the command line (Google Benchmark rejects flags it
// does not know) and says whether it was there.
inline bool takeTinyFlag(int& argc, char** argv) {
  bool tiny = false;
  int kept = 1;
  for (int i = 1; i < argc; ++i) {
    if (std::string(argv[i]) == "--tiny") {
      tiny = true;
    } else {
      argv[kept++] = argv[i];
    }
  }
  argc = kept;
  argv[argc] = nullptr;
  return tiny;
}

// Where a database under test lives. Disk is where the device keeps it, and
// there every autocommit insert waits for the disk to sync; memory (tmpfs)
// takes the sync away so that the CPU work around SQLite shows.
enum class Storage { kDisk, kMemory };

inline std::string storageName(Storage storage) {
  return storage == Storage::kDisk ? "disk" : "memory";
}

}  // namespace hushwall::bench

#endif  // HUSHWALL_BENCH_BENCH_SIZES_H_
