// The block history: the duplicate test, the History writers and the saving
// of blocked pictures. Whether anything is recorded at all is the calling
// hook's decision; these methods only do the recording.
#include <optional>

#include "host/env.h"
#include "host/text.h"
#include "host/value.h"
#include "model/database.h"
#include "model/hushwall.h"
#include "model/paths.h"
#include "model/picture_path.h"
#include "startup/notification_names.h"

namespace hushwall {
namespace {

constexpr char kNewestDateOfPair[] =
    "SELECT date FROM History WHERE phoneNumber = ? AND message = ? ORDER BY date DESC LIMIT 1";
constexpr char kInsertHistory[] =
    "INSERT INTO History (phoneNumber, name, message, date, blockType, mediaType, "
    "mediaFileName, mediaURL, isMine) VALUES (?,?,?,?,?,?,?,?,?)";

// A message stored less than this long before a new one with the same number
// and text is taken to be the same message delivered again.
constexpr double kDuplicateWindowSeconds = 120.0;

// One History row, in the order of the table's columns.
struct HistoryRecord {
  host::OptText phoneNumber;
  host::OptText name;
  host::OptText message;
  double date = 0.0;
  std::int32_t blockType = 0;
  std::int32_t mediaType = 0;
  host::OptText mediaFileName;
  host::OptText mediaURL;
  bool isMine = false;
};

// Prepares, binds, steps and resets one INSERT on an open connection.
//
// The statement is reset and deliberately never finalised: the history has
// always been written this way, so the close that follows answers
// SQLITE_BUSY and the connection, with its statement, stays open in the
// writing process. The settings bundle and the other process share the file
// under exactly that locking, and it is not changed behind their back.
//
// A step that fails (a locked database: there is no busy timeout, as there
// never was) loses the row and nothing more; there is no retry.
void insertRecord(const Database& db, const HistoryRecord& record) {
  Statement insert(db, kInsertHistory);
  if (!insert.isPrepared()) return;
  // Parameters follow the column list, so isMine, which the callers pass
  // before the media values, is bound last.
  insert.bindText(1, record.phoneNumber);
  insert.bindText(2, record.name);
  insert.bindText(3, record.message);
  insert.bindDouble(4, record.date);
  insert.bindInt(5, record.blockType);
  insert.bindInt(6, record.mediaType);
  insert.bindText(7, record.mediaFileName);
  insert.bindText(8, record.mediaURL);
  insert.bindInt(9, record.isMine ? 1 : 0);
  insert.step();
  insert.reset();
  insert.keepUnfinalized();
}

// The settings bundle redraws its history list on this; it is posted whether
// or not anything was written, since the listener only re-reads the table.
void announceNewHistory() { host::env().notifyCenter->post(kNewMessagedAddedNotification); }

// Records arrive as dictionaries built by the incoming filter; absent keys
// and values of the wrong kind answer NULL for texts and 0 for numbers, as a
// message to nil would.
HistoryRecord recordFromDictionary(const host::Value& dictionary) {
  HistoryRecord record;
  record.phoneNumber = dictionary.objectForKey("phoneNumber").text();
  record.name = dictionary.objectForKey("name").text();
  record.message = dictionary.objectForKey("message").text();
  // The time goes through a single-precision float on its way in, which
  // rounds dates of this era to a multiple of 128 seconds. Rows written by
  // the batch have always carried that rounding, and the duplicate test and
  // the settings bundle's list are used to it, so it is kept.
  record.date = static_cast<double>(dictionary.objectForKey("timestamp").floatValue());
  // Only "blockType" is read. The incoming filter files its value under a
  // different key, so its rows have always been stored with block type 0;
  // existing histories look that way and the two sides stay as they are.
  record.blockType = dictionary.objectForKey("blockType").intValue();
  record.isMine = dictionary.objectForKey("isMine").boolValue();
  record.mediaType = dictionary.objectForKey("mediaType").intValue();
  record.mediaFileName = dictionary.objectForKey("mediaFileName").text();
  record.mediaURL = dictionary.objectForKey("mediaURL").text();
  return record;
}

}  // namespace

bool Hushwall::existMessage(const host::OptText& message, const host::OptText& phoneNumber,
                            double timestamp) {
  // Any failure answers NO: recording a message twice is the lesser harm
  // than losing one.
  bool found = false;
  Database db(databasePath());
  if (!db.isOpen()) return found;
  Statement query(db, kNewestDateOfPair);
  if (!query.isPrepared()) return found;
  // An absent number or message binds NULL, which equals nothing.
  query.bindText(1, phoneNumber);
  query.bindText(2, message);
  // Only the newest row of the pair counts. A stored date after the
  // timestamp gives a negative age and so counts as the same message; an
  // age of 120 s or more (or not a number) steps on, and the one-row query
  // then ends with NO.
  for (;;) {
    if (query.step() != SQLITE_ROW) {
      found = false;
      break;
    }
    double storedDate = query.columnDouble(0);
    found = true;
    if (timestamp - storedDate < kDuplicateWindowSeconds) break;
  }
  return found;
}

void Hushwall::addHistoryWithPhoneNumber(const host::OptText& phoneNumber,
                                         const host::OptText& name,
                                         const host::OptText& message, double date,
                                         std::int32_t blockType, bool isMine) {
  // Rows without media have always carried empty texts, not NULL, in the
  // media columns; whoever reads the table sees them as before.
  addHistoryWithPhoneNumber(phoneNumber, name, message, date, blockType, isMine, 0, host::Text(),
                            host::Text());
}

void Hushwall::addHistoryWithPhoneNumber(const host::OptText& phoneNumber,
                                         const host::OptText& name,
                                         const host::OptText& message, double date,
                                         std::int32_t blockType, bool isMine,
                                         std::int32_t mediaType,
                                         const host::OptText& mediaFileName,
                                         const host::OptText& mediaURL) {
  {
    Database db(databasePath());
    if (db.isOpen()) {
      insertRecord(db, HistoryRecord{phoneNumber, name, message, date, blockType, mediaType,
                                     mediaFileName, mediaURL, isMine});
    } else {
      // The writers have never closed the handle of a failed open.
      db.keepOpenOnFailure();
    }
  }
  announceNewHistory();
}

void Hushwall::addHistoryWithArray(const host::Array& records) {
  // One open and one close for the whole batch of incoming stanzas, but one
  // statement per row and no transaction: every row is committed by itself
  // as it is stepped, so a row that fails (a locked file, say) loses only
  // itself, and the file's write lock is held for one row at a time.
  {
    Database db(databasePath());
    if (!db.isOpen()) {
      db.keepOpenOnFailure();
      announceNewHistory();
      return;
    }
    for (const host::Value& dictionary : records) {
      insertRecord(db, recordFromDictionary(dictionary));
    }
    // Each row's statement is left unfinalised (see insertRecord), so this
    // close answers SQLITE_BUSY unless the array was empty.
  }
  // Once for the whole batch, not once per row.
  announceNewHistory();
}

host::Text Hushwall::saveImageOnDiskWithData(const std::optional<host::Bytes>& data,
                                            const host::OptText& phoneNumber) {
  host::FileSystem& files = *host::env().fileSystem;
  // Microsecond resolution in the name; two pictures saved within the same
  // microsecond share a path and the later one wins.
  const PicturePath path = picturePath(phoneNumber, host::env().clock->now());
  // A number that names no folder of the data directory (a sender address
  // such as "../../tmp/x/4917@s.whatsapp.net") loses its picture, as any
  // failed write does: nothing is made outside the data directory, and the
  // caller still records the history row with the path, as it would after a
  // write that failed.
  if (!path.insideDataDirectory) return path.file;
  // A plain file of that name counts as existing too; the write below then
  // fails, which is accepted.
  if (!files.fileExists(path.folder)) files.createDirectory(path.folder);
  // Atomically, so the settings bundle never shows a half-written picture.
  // The result is not looked at: the path goes into the record either way.
  if (data) files.writeAtomically(path.file, *data);
  return path.file;
}

}  // namespace hushwall
