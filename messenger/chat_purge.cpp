// The chat purge: each time the messenger goes to the background, and when
// it ends, every chat it holds with a blacklisted number is deleted through
// the messenger's own chat storage. The chats of a number are found in the
// messenger's message database by JIDs that contain the number, the same
// containment rule the blacklist uses everywhere.
#include <sqlite3.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/env.h"
#include "host/text.h"
#include "host/value.h"
#include "messenger/chat_search.h"
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

// The messenger's chat manager class, looked up by name the first time a
// purge runs and kept for the life of the process, as the class itself is.
// Never released: hooks may run until the very end of the process, after
// static destructors have started.
const Value& chatManagerClass() {
  static const Value* cls = new Value(host::env().runtime->getClass("ChatManager"));
  return *cls;
}

Value sharedChatManager() { return sendTo(chatManagerClass(), "sharedManager"); }

// The messenger's message database, opened; nothing when there is none yet
// or it cannot be opened. Only read from: the wrapper closes the handle.
std::unique_ptr<Database> openChatStorage() {
  host::OptText documents = host::env().bundles->documentsDirectory();
  if (!documents) return nullptr;
  const Text path = *documents + host::T(kChatStorageComponent);
  // Before the messenger has stored its first message there is nothing to
  // search, and opening would create an empty file in its folder.
  if (!host::env().fileSystem->fileExists(path)) return nullptr;
  auto db = std::make_unique<Database>(path);
  if (!db->isOpen()) return nullptr;
  return db;
}

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
  // Every number's JIDs from one scan of the messages, found before any
  // chat is deleted; a chat deleted meanwhile is simply no longer found by
  // the existence test below, as with a search made later. Numbers that the
  // scan cannot answer exactly are searched one by one in their turn.
  std::vector<std::optional<host::Array>> found(entries.size());
  if (std::unique_ptr<Database> db = openChatStorage()) found = sessionsInOnePass(*db, entries);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    Value jids = found[i] ? Value::array(std::move(*found[i]))
                          : sendTo(self, "getSessionsWithPhoneNumber:", {Value::string(entries[i])});
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
  std::unique_ptr<Database> db = openChatStorage();
  if (!db) return Value::array({});
  return Value::array(sessionsByQuery(*db, argumentAt(args, 0).text()));
}

}  // namespace hushwall
