// Puts a database where the code under test will open it, on the storage a
// benchmark asks for.
#ifndef HUSHWALL_BENCH_DATABASE_PLACEMENT_H_
#define HUSHWALL_BENCH_DATABASE_PLACEMENT_H_

#include <string>

#include "bench/bench_sizes.h"

namespace hushwall::bench {

// A copy of `source` at `nativePath` (its folders made as needed). In memory,
// the copy lives in a tmpfs folder of its own and `nativePath` is a symbolic
// link to it: SQLite follows the link and keeps its journal beside the real
// file, so every write stays in memory. The tmpfs folder goes with the object.
class PlacedDatabase {
 public:
  PlacedDatabase(const std::string& source, const std::string& nativePath, Storage storage);
  ~PlacedDatabase();
  PlacedDatabase(const PlacedDatabase&) = delete;
  PlacedDatabase& operator=(const PlacedDatabase&) = delete;

  // Where the file really is.
  const std::string& file() const { return file_; }

 private:
  std::string memoryFolder_;
  std::string file_;
};

// A symbolic link at `nativePath` to a cached database that is only read, so
// that large files are not copied for every run.
void linkDatabase(const std::string& cachedFile, const std::string& nativePath);

}  // namespace hushwall::bench

#endif  // HUSHWALL_BENCH_DATABASE_PLACEMENT_H_
