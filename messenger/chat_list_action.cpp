// The blacklist button in the chat list. When the user opens a chat's "more"
// options, the chat is noted; the action sheet built next gets one button,
// "Add to Blacklist" or "Remove from Blacklist"; the button asks for
// confirmation in an alert, and "Yes" writes the change to the Blacklist
// table and tells every process to reload its copy. The three steps happen
// at different moments and in different host methods, so what they share is
// kept in process-wide variables, on the main thread only.
#include <cstdint>

#include "host/alerts.h"
#include "host/env.h"
#include "host/text.h"
#include "host/value.h"
#include "messenger/hooks.h"
#include "messenger/host_messages.h"
#include "model/database.h"
#include "model/hushwall.h"
#include "model/paths.h"
#include "startup/blacklist.h"
#include "startup/notification_names.h"
#include "startup/settings.h"

namespace hushwall {

host::IMP original_chatSessionCellShowMoreOptions = nullptr;
host::IMP original_actionSheetWithTitle = nullptr;

namespace {

using host::Text;
using host::Value;

// The chat noted when its options opened. The name is the label's text as
// the messenger had it, which may itself be absent. The number is absent
// ("nothing") between an answer and the next noting.
host::OptText pendingChatName = Text();
host::OptText pendingChatNumber = Text();
// A chat was noted and the sheet that follows has not had its button yet.
bool whatsAppShowAddBlacklistButton = false;
// Despite the name: true when the noted number was already blacklisted when
// it was noted, which makes the button a removal.
bool blacklistButtonInsertAction = false;

// The alert's tag says which question the answer belongs to, since one
// delegate (the model object) answers both.
constexpr std::int64_t kAddAlertTag = 989898;     // 0xF1ACA
constexpr std::int64_t kRemoveAlertTag = 979797;  // 0xEF355
constexpr std::intptr_t kYesButtonIndex = 1;      // "No" is the cancel button, index 0

constexpr char kInsertBlacklist[] = "INSERT INTO Blacklist (name, phoneNumber) VALUES (?,?)";
constexpr char kDeleteBlacklist[] = "DELETE FROM Blacklist WHERE phoneNumber = ?";

// The confirmation, shown when the sheet's button is tapped. Its answer goes
// to the shared model object, which lives as long as the process, so the
// alert can never outlive its delegate.
void showConfirmation(const Text& message, std::int64_t tag) {
  host::AlertView alert;
  alert.title = host::T("Hushwall");
  alert.message = message;
  alert.cancelButtonTitle = host::T("No");
  alert.otherButtonTitles = {host::T("Yes")};
  alert.tag = tag;
  host::env().alerts->show(alert, [](const host::AlertView& answered, std::intptr_t index) {
    Hushwall::sharedInstance()->alertView(answered, index);
  });
}

// Opens the database, runs one writing statement and closes it, all within
// the call. Like every writer of this database, it resets the statement and
// never finalises it, and it leaves the handle of a failed open alone (see
// model/database.h for why). A failure loses the change silently; the caller
// still announces it, and the reload then shows the table as it really is.
template <typename Bind>
void writeBlacklist(const char* sql, Bind bind) {
  Database db(databasePath());
  if (!db.isOpen()) {
    db.keepOpenOnFailure();
    return;
  }
  Statement statement(db, sql);
  if (!statement.isPrepared()) return;
  bind(statement);
  statement.step();
  statement.reset();
  statement.keepUnfinalized();
}

// The stored entry that made the number blacklisted. An entry covers every
// number that contains it, so removing "the number" means removing that
// entry, which may be a shorter form than the chat's number. The first match
// in table order wins; "" (which deletes nothing) when none matches. The
// containment test is the platform's, as everywhere else the blacklist is
// consulted.
Text entryCovering(const host::OptText& number) {
  if (blacklistNumbers == nullptr) return Text();
  for (const Text& entry : *blacklistNumbers) {
    if (host::containsByLocation(number, entry)) return entry;
  }
  return Text();
}

}  // namespace

Value hook_chatSessionCellShowMoreOptions(const Value& self, const host::Selector& cmd,
                                          const host::Args& args) {
  if (!settings_ActionButton) return original_chatSessionCellShowMoreOptions(self, cmd, args);

  Value cell = argumentAt(args, 0);
  Value jid = sendTo(cell, "jid");
  host::OptText number = Hushwall::sharedInstance()->getPhoneNumber(jid.text());
  Value label = sendTo(cell, "nameLabel");
  // Group rows and the like have no JID: they are not noted, and a chat
  // noted earlier whose sheet never came stays pending.
  if (!jid.isNil()) {
    pendingChatNumber = number;
    // A chat the messenger shows without a name label is still offered,
    // under a neutral name.
    pendingChatName =
        label.isNil() ? host::OptText(host::T("Anonymous")) : sendTo(label, "text").text();
    whatsAppShowAddBlacklistButton = true;
    // Decided now, from the list as it is when the options open, not when
    // the button is tapped. The contacts-only setting plays no part: the
    // button is about the list itself.
    blacklistButtonInsertAction = Hushwall::sharedInstance()->existPhoneNumber(number);
  }
  return original_chatSessionCellShowMoreOptions(self, cmd, args);
}

Value hook_actionSheetWithTitle(const Value& self, const host::Selector& cmd,
                                const host::Args& args) {
  bool enabled = settings_ActionButton;
  Value sheet = original_actionSheetWithTitle(self, cmd, args);
  if (!enabled || !whatsAppShowAddBlacklistButton) return sheet;
  // The messenger builds other sheets with this class too; only the first
  // one after a noted chat is that chat's options sheet.
  whatsAppShowAddBlacklistButton = false;

  Text message;
  Text title;
  std::int64_t tag;
  if (blacklistButtonInsertAction) {
    message = host::formatObjects(host::T("Would you like to unblacklist %@ (%@) ?"),
                                  {pendingChatName, pendingChatNumber});
    title = host::T("Remove from Blacklist");
    tag = kRemoveAlertTag;
  } else {
    message = host::formatObjects(host::T("Would you like to blacklist %@ (%@) ?"),
                                  {pendingChatName, pendingChatNumber});
    title = host::T("Add to Blacklist");
    tag = kAddAlertTag;
  }
  // The sheet keeps the handler; it carries its own copy of the question so
  // that it does not depend on what is noted by the time it is tapped.
  sendTo(sheet, "addButtonWithTitle:handler:",
         {Value::string(title), Value::block([message, tag] { showConfirmation(message, tag); })});
  return sheet;
}

void Hushwall::alertView(const host::AlertView& alertView, std::intptr_t buttonIndex) {
  if (alertView.tag == kAddAlertTag && buttonIndex == kYesButtonIndex) {
    writeBlacklist(kInsertBlacklist, [](Statement& insert) {
      insert.bindText(1, pendingChatName);
      insert.bindText(2, pendingChatNumber);
    });
  } else if (alertView.tag == kRemoveAlertTag && buttonIndex == kYesButtonIndex) {
    Text key = entryCovering(pendingChatNumber);
    writeBlacklist(kDeleteBlacklist, [&key](Statement& remove) { remove.bindText(1, key); });
  } else {
    // "No", or an alert that is not ours: nothing changes, nobody is told.
    pendingChatNumber.reset();
    return;
  }
  // Every process, this one included, reloads its copy of the list from the
  // table; announced even when the write failed, since the reload only
  // shows what is really there.
  host::env().notifyCenter->post(kContactsChangedNotification);
  pendingChatNumber.reset();
}

}  // namespace hushwall
