// The chat purge: each time the messenger goes to the background, and when
// it ends, every chat it holds with a blacklisted number is deleted through
// the messenger's own chat storage. The chats of a number are found in the
// messenger's message database by JIDs that contain the number, the same
// containment rule the blacklist uses everywhere.
#include <sqlite3.h>

#include <string>
#include <vector>

#include "host/env.h"
#include "host/text.h"
#include "host/value.h"
#include "messenger/hooks.h"
#include "messenger/host_messages.h"
#include "model/database.h"
#include "startup/blacklist.h"
#include "startup/settings.h"

namespace hushwall {

host::IMP original_applicationDidEnterBackground = nullptr;
host::IMP original_applicationWillTerminate = nullptr;

namespace {

using host::Text;
using host::Value;

// The messenger's message database, in its documents directory. Only read.
constexpr char kChatStorageComponent[] = "/ChatStorage.sqlite";

// Every message row sent to or received from a JID containing the number.
constexpr char kMessagesWithNumber[] =
    "SELECT ZTOJID, ZFROMJID FROM ZWAMESSAGE WHERE ZTOJID LIKE '%%%s%%' OR ZFROMJID LIKE '%%%s%%'";

// The messenger's chat manager class, looked up by name the first time a
// purge runs and kept for the life of the process, as the class itself is.
// Never released: hooks may run until the very end of the process, after
// static destructors have started.
const Value& chatManagerClass() {
  static const Value* cls = new Value(host::env().runtime->getClass("ChatManager"));
  return *cls;
}

Value sharedChatManager() { return sendTo(chatManagerClass(), "sharedManager"); }

// The purge comes first, so that by the time the messenger saves its state
// and takes its snapshot for the app switcher the chats are already gone.
Value purgeThenHandOn(host::IMP original, const Value& self, const host::Selector& cmd,
                      const host::Args& args) {
  if (settings_DeleteMessages) sendTo(self, "deleteAllMessagesBlacklisted");
  return original(self, cmd, args);
}

}  // namespace

Value hook_applicationDidEnterBackground(const Value& self, const host::Selector& cmd,
                                         const host::Args& args) {
  return purgeThenHandOn(original_applicationDidEnterBackground, self, cmd, args);
}

Value hook_applicationWillTerminate(const Value& self, const host::Selector& cmd,
                                    const host::Args& args) {
  return purgeThenHandOn(original_applicationWillTerminate, self, cmd, args);
}

Value deleteAllMessagesBlacklisted(const Value& self, const host::Selector&, const host::Args&) {
  Value storage = sendTo(sharedChatManager(), "storage");
  if (blacklistNumbers == nullptr) return Value();
  // A copy: the messages below go into the messenger, and should anything in
  // there run the main loop, a reload of the list must not pull it from
  // under this loop.
  const std::vector<Text> entries = *blacklistNumbers;
  for (const Text& entry : entries) {
    Value jids = sendTo(self, "getSessionsWithPhoneNumber:", {Value::string(entry)});
    const host::Array* list = jids.array();
    if (list == nullptr) continue;
    for (const Value& jid : *list) {
      // The list repeats a JID once per message and two entries can find the
      // same chat; asking for an existing chat first means each is deleted
      // once, and the storage is never asked to make one just to delete it.
      if (sendTo(storage, "existingChatSessionForJID:", {jid}).isNil()) continue;
      sendTo(storage, "deleteChatSession:", {sendTo(storage, "chatSessionForJID:", {jid})});
      // The chat list redraws after every deletion, so it never shows a chat
      // that is already gone.
      sendTo(sharedChatManager(), "refreshChats");
    }
  }
  return Value();
}

Value getSessionsWithPhoneNumber(const Value&, const host::Selector&, const host::Args& args) {
  host::OptText number = argumentAt(args, 0).text();
  host::Array result;
  host::OptText documents = host::env().bundles->documentsDirectory();
  if (!documents) return Value::array(result);
  const Text path = *documents + host::T(kChatStorageComponent);
  // Before the messenger has stored its first message there is nothing to
  // search, and opening would create an empty file in its folder.
  if (!host::env().fileSystem->fileExists(path)) return Value::array(result);

  // Only read from: the wrapper finalises the statement and closes the handle,
  // also after a failed open or prepare.
  Database db(path);
  if (!db.isOpen()) return Value::array(result);

  // Built with %s, not %q: the numbers come from the user's own blacklist,
  // digits in practice, and an entry with a quote in it simply fails to
  // prepare and finds no chats. The string is not freed, as it never has
  // been in the shipped tweak: a few dozen bytes per entry, only on trips to
  // the background, and the purge is kept exactly as it has always run
  // rather than tidied.
  std::string utf8;
  if (number) utf8 = host::toUtf8(*number);
  const char* numberText = number ? utf8.c_str() : nullptr;
  char* sql = sqlite3_mprintf(kMessagesWithNumber, numberText, numberText);

  Statement query(db, sql);
  if (!query.isPrepared()) return Value::array(result);
  const Text needle = number.value_or(Text());
  while (query.step() == SQLITE_ROW) {
    Text to = query.columnText(0).value_or(Text());
    Text from = query.columnText(1).value_or(Text());
    // LIKE ignores case and treats "_" as a wildcard; this plain test keeps
    // only JIDs that really contain the number. A row names one chat: the
    // recipient when it is the number's, otherwise the sender.
    if (host::containsByLocation(to, needle)) {
      result.push_back(Value::string(to));
    } else if (host::containsByLocation(from, needle)) {
      result.push_back(Value::string(from));
    }
  }
  return Value::array(result);
}

}  // namespace hushwall
