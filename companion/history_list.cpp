#include "companion/history_list.h"

#include <cmath>
#include <map>
#include <stdexcept>

#include "companion/companion_database.h"
#include "companion/display_text.h"
#include "companion/picture_files.h"
#include "startup/notification_names.h"

namespace hushwall::companion {
namespace {

// History.mediaType of a row whose picture was saved.
constexpr std::int64_t kImageMedia = 1;
// History.blockType of a notification dropped in SpringBoard.
constexpr std::int64_t kNotificationBlock = 2;
// 0001-01-01 and 9999-12-31 in seconds since 1970: every date formatter
// handles what lies between.
constexpr double kEarliestDate = -62135596800.0;
constexpr double kLatestDate = 253402300799.0;

std::string text(const Query& row, int column) { return displayText(row.bytes(column).value_or("")); }

}  // namespace

const char* blockKindName(BlockKind kind) {
  switch (kind) {
    case BlockKind::kOwn: return "own";
    case BlockKind::kNotification: return "notification";
    case BlockKind::kIncoming: break;
  }
  return "incoming";
}

std::vector<HistoryEntry> HistoryList::entries() {
  CompanionDatabase db(files_);
  Query rows(db,
             "SELECT rowid, phoneNumber, name, message, date, blockType, mediaType, mediaFileName, "
             "isMine FROM History ORDER BY date DESC, rowid DESC");
  std::vector<HistoryEntry> entries;
  while (rows.next()) {
    HistoryEntry entry;
    entry.id = rows.integer(0);
    entry.phoneNumber = text(rows, 1);
    entry.name = text(rows, 2);
    entry.message = text(rows, 3);
    std::optional<double> date = rows.real(4);
    if (date && std::isfinite(*date) && *date >= kEarliestDate && *date <= kLatestDate) {
      entry.date = displayText(format_(*date));
    }
    if (rows.integer(8) != 0) {
      entry.kind = BlockKind::kOwn;
    } else if (rows.integer(5) == kNotificationBlock) {
      entry.kind = BlockKind::kNotification;
    }
    // Only a picture that is where the library saves them is shown: the
    // path comes from a row, and the screen opens what it names.
    std::optional<std::string_view> picture = rows.bytes(7);
    if (rows.integer(6) == kImageMedia && picture && isPicturePath(std::string(*picture)) &&
        files_.fileExists(host::fromUtf8(*picture))) {
      entry.hasPicture = true;
      entry.picturePath = files_.nativePath(host::fromUtf8(*picture));
    }
    entries.push_back(std::move(entry));
  }
  return entries;
}

std::vector<HistorySection> HistoryList::sections() {
  std::vector<HistorySection> sections;
  std::map<std::string, std::size_t> byNumber;
  for (HistoryEntry& entry : entries()) {
    auto [at, added] = byNumber.emplace(entry.phoneNumber, sections.size());
    if (added) sections.push_back({entry.phoneNumber, entry.phoneNumber, {}});
    HistorySection& section = sections[at->second];
    // Named after the other party: the newest name that is not the user's own.
    if (section.title == section.phoneNumber && entry.kind != BlockKind::kOwn && !entry.name.empty()) {
      section.title = entry.name + (entry.phoneNumber.empty() ? "" : " (" + entry.phoneNumber + ")");
    }
    section.entries.push_back(std::move(entry));
  }
  return sections;
}

void HistoryList::remove(std::int64_t id) {
  CompanionDatabase db(files_);
  std::optional<std::string> picture;
  {
    Transaction transaction(db);
    Query row(db, "SELECT mediaFileName FROM History WHERE rowid = ?");
    if (!row.bind(1, id).next()) {
      throw std::runtime_error("no history row " + std::to_string(id) + "; nothing deleted");
    }
    if (auto path = row.bytes(0)) picture = std::string(*path);
    Query remove(db, "DELETE FROM History WHERE rowid = ?");
    remove.bind(1, id).next();
    // Two pictures saved within one microsecond share a path, and so do the
    // rows of a message recorded twice; the file stays while a row shows it.
    if (picture) {
      Query others(db, "SELECT 1 FROM History WHERE mediaFileName = ? LIMIT 1");
      if (others.bind(1, *picture).next()) picture.reset();
    }
    transaction.commit();
  }
  if (picture) removePicture(files_, *picture);
  notifications_.post(kNewMessagedAddedNotification);
}

ClearedHistory HistoryList::clear() {
  ClearedHistory cleared;
  std::vector<std::string> shown;
  {
    CompanionDatabase db(files_);
    Transaction transaction(db);
    Query pictures(db, "SELECT DISTINCT mediaFileName FROM History WHERE mediaFileName <> ''");
    while (pictures.next()) shown.emplace_back(pictures.bytes(0).value_or(""));
    db.exec("DELETE FROM History");
    cleared.rows = db.changes();
    transaction.commit();
  }
  // After the rows: a row never points at a picture that is gone, while a
  // picture left by a failed removal is only a file. The rows' own pictures
  // first, then those saved without a row (history off).
  for (const std::string& picture : shown) cleared.pictures += removePicture(files_, picture) ? 1 : 0;
  cleared.pictures += removeAllPictures(files_);
  notifications_.post(kNewMessagedAddedNotification);
  return cleared;
}

}  // namespace hushwall::companion
