// The block history as the settings bundle shows it: newest first, grouped
// by number, every row ready to show however damaged it is. Deleting a row
// takes its picture with it; clearing takes every row with its picture, and
// the pictures no row names once they are old enough that no batch can
// still be writing their rows. Each change is announced with newMessagedAdded, the history's one
// notification, so that every other listener re-reads the table.
#ifndef HUSHWALL_COMPANION_HISTORY_LIST_H_
#define HUSHWALL_COMPANION_HISTORY_LIST_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/file_system.h"
#include "host/notify_center.h"

namespace hushwall::companion {

// Where a message was kept from the user, as the row's isMine and blockType
// tell it.
enum class BlockKind {
  kIncoming,      // a message taken out of the messenger's incoming stream
  kOwn,           // the user's own message to a blacklisted number
  kNotification,  // a notification dropped in SpringBoard
};

// "incoming", "own", "notification".
const char* blockKindName(BlockKind kind);

struct HistoryEntry {
  std::int64_t id = 0;
  std::string phoneNumber;
  std::string name;
  std::string message;
  std::string date;  // formatted; "" when the row has no usable date
  BlockKind kind = BlockKind::kIncoming;
  bool hasPicture = false;
  std::string picturePath;  // native path, for opening; "" without a picture
};

// The rows of one number, newest first.
struct HistorySection {
  std::string phoneNumber;
  std::string title;  // "Name (number)", or the number alone
  std::vector<HistoryEntry> entries;
};

// Seconds since 1970 to a date in the user's locale. Only called with finite
// values within the years 1 to 9999.
using DateFormat = std::function<std::string(double secondsSince1970)>;

class Query;

struct ClearedHistory {
  int rows = 0;
  int pictures = 0;
};

class HistoryList {
 public:
  HistoryList(host::FileSystem& files, host::NotifyCenter& notifications, DateFormat format)
      : files_(files), notifications_(notifications), format_(std::move(format)) {}

  // Every row, newest first.
  std::vector<HistoryEntry> entries();
  // The same rows by number (as stored); sections in the order of their
  // newest rows.
  std::vector<HistorySection> sections();
  // The same, one row at a time in bounded memory: each section (without its
  // entries) before its rows.
  void visitSections(const std::function<void(const HistorySection&)>& onSection,
                     const std::function<void(const HistoryEntry&)>& onEntry);

  // Deletes the row and its picture file (unless another row shows the same
  // file). Throws std::runtime_error when there is no such row.
  void remove(std::int64_t id);

  // Deletes every row and the pictures they name, then the saved pictures
  // that no row names and that are over an hour old, and nothing else.
  ClearedHistory clear();

 private:
  HistoryEntry entryOf(const Query& rows);

  host::FileSystem& files_;
  host::NotifyCenter& notifications_;
  DateFormat format_;
};

}  // namespace hushwall::companion

#endif  // HUSHWALL_COMPANION_HISTORY_LIST_H_
