#include "companion/blacklist_editor.h"

#include <stdexcept>

#include "companion/companion_database.h"
#include "companion/display_text.h"
#include "companion/phone_number_rule.h"
#include "host/text.h"
#include "startup/notification_names.h"

namespace hushwall::companion {
namespace {

void checkNumber(const std::string& phoneNumber) {
  if (auto problem = phoneNumberProblem(phoneNumber)) throw std::invalid_argument(*problem);
}

}  // namespace

std::vector<BlacklistEntry> BlacklistEditor::entries() {
  CompanionDatabase db(files_);
  Query rows(db, "SELECT rowid, name, phoneNumber FROM Blacklist ORDER BY rowid");
  std::vector<BlacklistEntry> entries;
  while (rows.next()) {
    entries.push_back({rows.integer(0), displayText(rows.bytes(1).value_or("")),
                       displayText(rows.bytes(2).value_or(""))});
  }
  return entries;
}

void BlacklistEditor::add(const std::string& phoneNumber, const std::string& name) {
  checkNumber(phoneNumber);
  if (!host::isValidUtf8(name) || name.find('\0') != std::string::npos) {
    throw std::invalid_argument("the name for '" + phoneNumber + "' is not valid UTF-8 text");
  }
  CompanionDatabase db(files_);
  {
    Transaction transaction(db);
    Query existing(db, "SELECT 1 FROM Blacklist WHERE phoneNumber = ? LIMIT 1");
    if (existing.bind(1, phoneNumber).next()) {
      throw std::invalid_argument("'" + phoneNumber + "' is already on the blacklist; nothing added");
    }
    Query insert(db, "INSERT INTO Blacklist (name, phoneNumber) VALUES (?,?)");
    insert.bind(1, name.empty() ? std::string(kAnonymousName) : name).bind(2, phoneNumber).next();
    transaction.commit();
  }
  notifications_.post(kContactsChangedNotification);
}

int BlacklistEditor::removeNumber(const std::string& phoneNumber) {
  checkNumber(phoneNumber);
  CompanionDatabase db(files_);
  Query remove(db, "DELETE FROM Blacklist WHERE phoneNumber = ?");
  remove.bind(1, phoneNumber).next();
  const int removed = db.changes();
  if (removed == 0) {
    throw std::runtime_error("'" + phoneNumber +
                             "' is not on the blacklist (entries match only as written); nothing removed");
  }
  notifications_.post(kContactsChangedNotification);
  return removed;
}

int BlacklistEditor::removeEntry(std::int64_t id) {
  CompanionDatabase db(files_);
  // A number listed twice (the chat-list action does not look for an
  // existing row) would stay blocked if only the one row went. A row without
  // a number goes alone: NULL equals nothing.
  Query remove(db,
               "DELETE FROM Blacklist WHERE rowid = ?1 OR "
               "phoneNumber = (SELECT phoneNumber FROM Blacklist WHERE rowid = ?1)");
  remove.bind(1, id).next();
  const int removed = db.changes();
  if (removed == 0) {
    throw std::runtime_error("no blacklist row " + std::to_string(id) + "; nothing removed");
  }
  notifications_.post(kContactsChangedNotification);
  return removed;
}

}  // namespace hushwall::companion
