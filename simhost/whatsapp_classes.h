// Stand-ins for the WhatsApp classes that Hushwall hooks or talks to, with
// the messenger's own behaviour reduced to what can be observed: each
// implementation records what it received in hostLog(), so that what got
// past the hooks is visible.
//
//  - XMPPConnection: processIncomingMessageStanzas: (delivers),
//    internalSendDeliveryReceiptsForStanzas:, sendMessage:.
//  - XMPPMessageStanza (properties fromJID, text, nickname, timestamp, id;
//    hasMedia, mediaType, mediaURL, media) and XMPPMediaElement (value).
//  - WAMessage: an outgoing message read with valueForKey: (toJID,
//    messageDate, text, messageType, id).
//  - ChatListViewController: chatSessionCellShowMoreOptions:; its cells
//    WAChatSessionCell (jid, nameLabel) with UILabel (text).
//  - WABlockBasedActionSheet: +actionSheetWithTitle:,
//    addButtonWithTitle:handler:.
//  - WhatsAppAppDelegate: applicationDidEnterBackground:,
//    applicationWillTerminate:.
//  - ChatManager (+sharedManager; storage, refreshChats), its WAChatStorage
//    (existingChatSessionForJID:, chatSessionForJID:, deleteChatSession:)
//    over the chats in hostLog().chats, and WAChatSession (jid).
#ifndef HUSHWALL_SIMHOST_WHATSAPP_CLASSES_H_
#define HUSHWALL_SIMHOST_WHATSAPP_CLASSES_H_

#include <cstdint>
#include <optional>
#include <string>

#include "host/value.h"
#include "platform/linux/object_runtime.h"
#include "simhost/object_access.h"

namespace hushwall::simhost {

void registerWhatsAppClasses(linux_platform::ObjectRuntime& runtime);

// An attachment: kind 1 is an image.
struct Media {
  std::int64_t type = 1;
  OptString url;
  host::Bytes bytes;
};

// An incoming message stanza. An absent field is a property the stanza lacks.
host::Value makeStanza(linux_platform::ObjectRuntime& runtime, const std::string& id,
                       const OptString& fromJID, const OptString& text,
                       const OptString& nickname, std::optional<double> timestamp,
                       const std::optional<Media>& media = std::nullopt);
// An outgoing message; messageType 0 is a text.
host::Value makeOutgoingMessage(linux_platform::ObjectRuntime& runtime, const std::string& id,
                                const OptString& toJID, const OptString& text,
                                std::int64_t messageType, double messageDate);
// A chat-list cell; without a name it has no label at all.
host::Value makeCell(linux_platform::ObjectRuntime& runtime, const OptString& jid,
                     const OptString& name);

// The user taps the button titled `title` on the last sheet built: its
// handler runs. Throws std::runtime_error when there is no such button.
void tapButton(const std::string& title);

}  // namespace hushwall::simhost

#endif  // HUSHWALL_SIMHOST_WHATSAPP_CLASSES_H_
