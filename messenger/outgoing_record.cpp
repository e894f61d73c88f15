// The outgoing message record: a text the user sends to a blacklisted number
// is written to the block history as the user's own, so that the history
// shows both sides of a conversation with a blocked contact. The message
// itself is always sent.
#include <cstdint>

#include "messenger/hooks.h"
#include "messenger/host_messages.h"
#include "model/hushwall.h"
#include "startup/settings.h"

namespace hushwall {

host::IMP original_sendMessage = nullptr;

namespace {

// The messenger's kind number for a plain text message. A message without a
// kind reads as 0 and so counts as text.
constexpr std::int32_t kTextMessageType = 0;

// How the user's own messages are named in the history.
constexpr char kOwnName[] = "Me";

}  // namespace

host::Value hook_sendMessage(const host::Value& self, const host::Selector& cmd,
                             const host::Args& args) {
  host::Value message = argumentAt(args, 0);
  host::Value toJID = valueForKey(message, "toJID");
  double date = valueForKey(message, "messageDate").timeIntervalSince1970();
  host::Value text = valueForKey(message, "text");
  host::Value messageType = valueForKey(message, "messageType");

  if (messageType.intValue() == kTextMessageType) {
    Hushwall* model = Hushwall::sharedInstance();
    host::OptText number = model->getPhoneNumber(toJID.text());
    bool blacklisted = model->phoneNumberBlacklisted(number);
    // Only the history setting counts, not whether filtering is on: a user
    // who pauses the filter still wants the record of what they wrote to a
    // blocked contact. No duplicate test either: each send is a real send.
    if (settings_SaveHistory && blacklisted) {
      model->addHistoryWithPhoneNumber(number, host::T(kOwnName), text.text(), date,
                                       kBLOCK_TYPE_APP, true);
    }
  }
  return original_sendMessage(self, cmd, args);
}

}  // namespace hushwall
