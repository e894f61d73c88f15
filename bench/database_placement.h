// Puts a database where the code under test will open it, on the storage a
// benchmark asks for.
#ifndef HUSHWALL_BENCH_DATABASE_PLACEMENT_H_
#define HUSHWALL_BENCH_DATABASE_PLACEMENT_H_

#include <optional>
#include <string>
#include <vector>

#include "host/file_system.h"

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

// A simulated device refuses every link below its root, so the databases
// placed above would be refused. For as long as it lives, this process's
// device hands SQLite the paths of its root joined lexically, links and all
// (the benchmarks measure speed, not confinement), and finds files through
// links; everything else is the device's own file system.
class FollowingLinks : public host::FileSystem {
 public:
  explicit FollowingLinks(std::string nativeRoot);
  ~FollowingLinks() override;
  FollowingLinks(const FollowingLinks&) = delete;
  FollowingLinks& operator=(const FollowingLinks&) = delete;

  std::string nativePath(const host::Text& devicePath) override;
  bool fileExists(const host::Text& devicePath) override;
  bool removeItem(const host::Text& p) override { return device_->removeItem(p); }
  bool createDirectory(const host::Text& p) override { return device_->createDirectory(p); }
  bool copyItem(const host::Text& from, const host::Text& to) override { return device_->copyItem(from, to); }
  bool writeAtomically(const host::Text& p, const host::Bytes& b) override {
    return device_->writeAtomically(p, b);
  }
  std::optional<host::Dict> dictionaryWithContentsOfFile(const host::Text& p) override {
    return device_->dictionaryWithContentsOfFile(p);
  }
  std::optional<std::vector<host::Text>> contentsOfDirectory(const host::Text& p) override {
    return device_->contentsOfDirectory(p);
  }

 private:
  std::string root_;
  host::FileSystem* device_;
};

}  // namespace hushwall::bench

#endif  // HUSHWALL_BENCH_DATABASE_PLACEMENT_H_
