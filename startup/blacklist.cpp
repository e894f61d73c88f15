#include "startup/blacklist.h"

#include "model/database.h"
#include "model/paths.h"

namespace hushwall {

std::vector<host::Text>* blacklistNumbers = nullptr;

namespace {

// Reads the Blacklist rows into `list` from the front, each over the entry
// of the last load at its position (reusing that string's storage) or
// appended past them; answers how many it read, which may be fewer than the
// entries left in `list`. A NULL number is skipped.
std::size_t readBlacklistInto(std::vector<host::Text>& list) {
  std::size_t read = 0;
  Database db(databasePath());
  if (!db.isOpen()) return read;
  Statement query(db, "SELECT phoneNumber FROM Blacklist");
  if (!query.isPrepared()) return read;
  // An error in the middle of the rows keeps what was read before it.
  while (query.step() == SQLITE_ROW) {
    // A slot made for a NULL row is reused by the next row or cut off by
    // the caller.
    if (read == list.size()) list.emplace_back();
    if (query.columnTextInto(0, list[read])) ++read;
  }
  return read;
}

}  // namespace

void ContactsChanged() {
  // The same vector for the life of the process: only its content changes,
  // so a reader that holds it sees every reload.
  if (blacklistNumbers == nullptr) blacklistNumbers = new std::vector<host::Text>();
  // The rows overwrite the last load in place and the list is then cut to
  // them, which leaves it exactly as emptying it first and appending would:
  // empty when the reload fails, the rows read before an error when one
  // comes in the middle, never stale. Overwriting reuses the strings'
  // storage; freeing and allocating one string per row made a reload of ten
  // thousand numbers half again as slow as the query itself.
  const std::size_t read = readBlacklistInto(*blacklistNumbers);
  blacklistNumbers->resize(read);
}

}  // namespace hushwall
