// What Hushwall runs inside the messenger: the replacements of host methods
// (hook_*), the slots that keep the host's previous implementations
// (original_*), and the methods it adds to the application delegate.
#ifndef HUSHWALL_MESSENGER_HOOKS_H_
#define HUSHWALL_MESSENGER_HOOKS_H_

#include "host/runtime.h"

namespace hushwall {

// -[XMPPConnection processIncomingMessageStanzas:]: blocked senders' stanzas
// get receipts and never reach the messenger.
extern host::IMP original_processIncomingMessageStanzas;
host::Value hook_processIncomingMessageStanzas(const host::Value& self, const host::Selector& cmd,
                                               const host::Args& args);

// -[XMPPConnection sendMessage:]: texts to blacklisted numbers are recorded.
extern host::IMP original_sendMessage;
host::Value hook_sendMessage(const host::Value& self, const host::Selector& cmd,
                             const host::Args& args);

// -[ChatListViewController chatSessionCellShowMoreOptions:]: notes the chat.
extern host::IMP original_chatSessionCellShowMoreOptions;
host::Value hook_chatSessionCellShowMoreOptions(const host::Value& self, const host::Selector& cmd,
                                                const host::Args& args);

// +[WABlockBasedActionSheet actionSheetWithTitle:]: adds the blacklist button.
extern host::IMP original_actionSheetWithTitle;
host::Value hook_actionSheetWithTitle(const host::Value& self, const host::Selector& cmd,
                                      const host::Args& args);

// -[WhatsAppAppDelegate applicationDidEnterBackground:] and
// -applicationWillTerminate:: purge blacklisted chats first.
extern host::IMP original_applicationDidEnterBackground;
host::Value hook_applicationDidEnterBackground(const host::Value& self, const host::Selector& cmd,
                                               const host::Args& args);
extern host::IMP original_applicationWillTerminate;
host::Value hook_applicationWillTerminate(const host::Value& self, const host::Selector& cmd,
                                          const host::Args& args);

// Added to WhatsAppAppDelegate: the purge ("v@:") and the chat search ("@@:@").
host::Value deleteAllMessagesBlacklisted(const host::Value& self, const host::Selector& cmd,
                                         const host::Args& args);
host::Value getSessionsWithPhoneNumber(const host::Value& self, const host::Selector& cmd,
                                       const host::Args& args);

}  // namespace hushwall

#endif  // HUSHWALL_MESSENGER_HOOKS_H_
