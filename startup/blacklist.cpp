#include "startup/blacklist.h"

#include "model/database.h"
#include "model/paths.h"

namespace hushwall {

std::vector<host::Text>* blacklistNumbers = nullptr;

void ContactsChanged() {
  // The same vector for the life of the process: only its content changes,
  // so a reader that holds it sees every reload. It is emptied first, so a
  // reload that fails leaves it empty rather than stale.
  if (blacklistNumbers == nullptr) {
    blacklistNumbers = new std::vector<host::Text>();
  } else {
    blacklistNumbers->clear();
  }

  Database db(databasePath());
  if (!db.isOpen()) return;
  Statement query(db, "SELECT phoneNumber FROM Blacklist");
  if (!query.isPrepared()) return;
  // An error in the middle of the rows keeps what was read before it.
  while (query.step() == SQLITE_ROW) {
    host::OptText number = query.columnText(0);
    if (number) blacklistNumbers->push_back(std::move(*number));
  }
}

}  // namespace hushwall
