#include "companion/history_list.h"

#include <chrono>
#include <cmath>
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

// How old a picture that no row names must be before a clear takes it. A
// batch writes its rows right after saving its pictures, within one call of
// the messenger's stanza handler; an hour is far beyond any such call.
constexpr double kOrphanPictureAge = 3600.0;

double secondsNow() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

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

HistoryEntry HistoryList::entryOf(const Query& rows) {
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
  return entry;
}

std::vector<HistoryEntry> HistoryList::entries() {
  CompanionDatabase db(files_);
  Query rows(db,
             "SELECT rowid, phoneNumber, name, message, date, blockType, mediaType, mediaFileName, "
             "isMine FROM History ORDER BY date DESC, rowid DESC");
  std::vector<HistoryEntry> entries;
  while (rows.next()) entries.push_back(entryOf(rows));
  return entries;
}

void HistoryList::visitSections(const std::function<void(const HistorySection&)>& onSection,
                                const std::function<void(const HistoryEntry&)>& onEntry) {
  CompanionDatabase db(files_);
  // A section is the rows of one stored number. It leads with its newest row
  // (newest date, then last written), which also places it among the
  // sections, and is named after its newest name that is not the user's own
  // ("Me"). One row per section here; its rows are read section by section,
  // so however long the history, nothing is held but the current row, and
  // SQLite sorts no more than one section's rows at a time.
  Query sections(db,
                 "SELECT lead, title FROM (SELECT newest, "
                 "(SELECT MAX(rowid) FROM History WHERE phoneNumber IS g.number AND date IS g.newest) AS lead, "
                 "(SELECT name FROM History WHERE phoneNumber IS g.number AND CAST(isMine AS INTEGER) = 0 "
                 "AND length(CAST(name AS BLOB)) > 0 ORDER BY date DESC, rowid DESC LIMIT 1) AS title "
                 "FROM (SELECT phoneNumber AS number, MAX(date) AS newest FROM History GROUP BY phoneNumber) AS g) "
                 "ORDER BY newest DESC, lead DESC");
  Query rows(db,
             "SELECT rowid, phoneNumber, name, message, date, blockType, mediaType, mediaFileName, isMine "
             "FROM History WHERE phoneNumber IS (SELECT phoneNumber FROM History WHERE rowid = ?) "
             "ORDER BY date DESC, rowid DESC");
  while (sections.next()) {
    rows.reset();
    rows.bind(1, sections.integer(0));
    for (bool first = true; rows.next(); first = false) {
      HistoryEntry entry = entryOf(rows);
      if (first) {
        HistorySection header{entry.phoneNumber, entry.phoneNumber, {}};
        if (sections.bytes(1)) {
          header.title = text(sections, 1) + (entry.phoneNumber.empty() ? "" : " (" + entry.phoneNumber + ")");
        }
        onSection(header);
      }
      onEntry(entry);
    }
  }
}

std::vector<HistorySection> HistoryList::sections() {
  std::vector<HistorySection> sections;
  visitSections([&](const HistorySection& section) { sections.push_back(section); },
                [&](const HistoryEntry& entry) { sections.back().entries.push_back(entry); });
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
  // picture left by a failed removal is only a file. Only the deleted rows'
  // own pictures: the messenger saves a batch's pictures first and writes
  // their rows after, so a picture no row names yet may be about to get one.
  for (const std::string& picture : shown) cleared.pictures += removePicture(files_, picture) ? 1 : 0;
  // Pictures that no row will name (saved with the history off, or whose row
  // was lost to a lock or a crash) go once they are old enough that no batch
  // can still be writing their rows.
  cleared.pictures += removePicturesSavedBefore(files_, secondsNow() - kOrphanPictureAge);
  notifications_.post(kNewMessagedAddedNotification);
  return cleared;
}

}  // namespace hushwall::companion
