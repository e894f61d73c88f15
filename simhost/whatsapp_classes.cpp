#include "simhost/whatsapp_classes.h"

#include <algorithm>
#include <stdexcept>

#include "simhost/host_log.h"

namespace hushwall::simhost {
namespace {

using host::Args;
using host::Selector;
using host::Value;
using linux_platform::ObjectRuntime;

std::string idOf(const Value& object) { return utf8(property(object, "id")).value_or(""); }

std::vector<std::string> idsOf(const Value& stanzas) {
  std::vector<std::string> ids;
  if (const host::Array* items = stanzas.array()) {
    for (const Value& stanza : *items) ids.push_back(idOf(stanza));
  }
  return ids;
}

// --- XMPPConnection ---------------------------------------------------------

Value processIncomingMessageStanzas(const Value&, const Selector&, const Args& args) {
  hostLog().delivered.push_back(idsOf(args.at(0)));
  return Value();
}

Value internalSendDeliveryReceiptsForStanzas(const Value&, const Selector&, const Args& args) {
  hostLog().receipts.push_back(idsOf(args.at(0)));
  return Value();
}

Value sendMessage(const Value&, const Selector&, const Args& args) {
  hostLog().sent.push_back(idOf(args.at(0)));
  return Value();
}

// --- Chat list and its action sheet -------------------------------------------

Value chatSessionCellShowMoreOptions(const Value&, const Selector&, const Args& args) {
  hostLog().optionsOpened.push_back(utf8(property(args.at(0), "jid")));
  return Value();
}

Value actionSheetWithTitle(const Value& self, const Selector&, const Args& args) {
  Value sheet = runtimeOf(self).newObject("WABlockBasedActionSheet", {{host::T("title"), args.at(0)}});
  hostLog().sheets.push_back(SheetRecord{sheet, utf8(args.at(0)), {}});
  return sheet;
}

Value addButtonWithTitleHandler(const Value& self, const Selector&, const Args& args) {
  auto& sheets = hostLog().sheets;
  auto record = std::find_if(sheets.rbegin(), sheets.rend(),
                             [&](const SheetRecord& r) { return r.sheet.isSameObject(self); });
  if (record == sheets.rend()) throw std::logic_error("a sheet that actionSheetWithTitle: did not make");
  record->buttons.emplace_back(utf8(args.at(0)).value_or(""), args.at(1));
  return Value();
}

// --- Application delegate -------------------------------------------------------

Value applicationDidEnterBackground(const Value&, const Selector&, const Args&) {
  ++hostLog().backgrounded;
  return Value();
}

Value applicationWillTerminate(const Value&, const Selector&, const Args&) {
  ++hostLog().terminated;
  return Value();
}

// --- Chats ------------------------------------------------------------------------

// One manager per process, kept by its class; it owns the one storage.
Value sharedManager(const Value& self, const Selector&, const Args&) {
  Value manager = property(self, "sharedManager");
  if (manager.isNil()) {
    ObjectRuntime& runtime = runtimeOf(self);
    manager = runtime.newObject("ChatManager",
                                {{host::T("storage"), runtime.newObject("WAChatStorage")}});
    setProperty(self, "sharedManager", manager);
  }
  return manager;
}

Value refreshChats(const Value&, const Selector&, const Args&) {
  ++hostLog().refreshes;
  return Value();
}

Value chatSession(const Value& storage, const Value& jid) {
  return runtimeOf(storage).newObject("WAChatSession", {{host::T("jid"), jid}});
}

Value existingChatSessionForJID(const Value& self, const Selector&, const Args& args) {
  OptString jid = utf8(args.at(0));
  if (!jid || hostLog().chats.count(*jid) == 0) return Value();
  return chatSession(self, args.at(0));
}

Value chatSessionForJID(const Value& self, const Selector&, const Args& args) {
  return chatSession(self, args.at(0));
}

Value deleteChatSession(const Value&, const Selector&, const Args& args) {
  if (OptString jid = utf8(property(args.at(0), "jid"))) hostLog().chats.erase(*jid);
  return Value();
}

}  // namespace

void registerWhatsAppClasses(ObjectRuntime& runtime) {
  runtime.registerClass("XMPPConnection");
  runtime.addHostMethod("XMPPConnection", "processIncomingMessageStanzas:",
                        processIncomingMessageStanzas);
  runtime.addHostMethod("XMPPConnection", "internalSendDeliveryReceiptsForStanzas:",
                        internalSendDeliveryReceiptsForStanzas);
  runtime.addHostMethod("XMPPConnection", "sendMessage:", sendMessage);

  runtime.registerClass("XMPPMessageStanza");
  for (const char* getter : {"hasMedia", "mediaType", "mediaURL", "media"}) {
    runtime.addHostMethod("XMPPMessageStanza", getter, propertyNamedBySelector);
  }
  runtime.registerClass("XMPPMediaElement");
  runtime.addHostMethod("XMPPMediaElement", "value", propertyNamedBySelector);
  runtime.registerClass("WAMessage");

  runtime.registerClass("ChatListViewController");
  runtime.addHostMethod("ChatListViewController", "chatSessionCellShowMoreOptions:",
                        chatSessionCellShowMoreOptions);
  runtime.registerClass("WAChatSessionCell");
  runtime.addHostMethod("WAChatSessionCell", "jid", propertyNamedBySelector);
  runtime.addHostMethod("WAChatSessionCell", "nameLabel", propertyNamedBySelector);
  runtime.registerClass("UILabel");
  runtime.addHostMethod("UILabel", "text", propertyNamedBySelector);
  runtime.registerClass("WABlockBasedActionSheet");
  runtime.addHostMethod("WABlockBasedActionSheet", "actionSheetWithTitle:", actionSheetWithTitle,
                        true);
  runtime.addHostMethod("WABlockBasedActionSheet", "addButtonWithTitle:handler:",
                        addButtonWithTitleHandler);

  runtime.registerClass("WhatsAppAppDelegate");
  runtime.addHostMethod("WhatsAppAppDelegate", "applicationDidEnterBackground:",
                        applicationDidEnterBackground);
  runtime.addHostMethod("WhatsAppAppDelegate", "applicationWillTerminate:",
                        applicationWillTerminate);

  runtime.registerClass("ChatManager");
  runtime.addHostMethod("ChatManager", "sharedManager", sharedManager, true);
  runtime.addHostMethod("ChatManager", "storage", propertyNamedBySelector);
  runtime.addHostMethod("ChatManager", "refreshChats", refreshChats);
  runtime.registerClass("WAChatStorage");
  runtime.addHostMethod("WAChatStorage", "existingChatSessionForJID:", existingChatSessionForJID);
  runtime.addHostMethod("WAChatStorage", "chatSessionForJID:", chatSessionForJID);
  runtime.addHostMethod("WAChatStorage", "deleteChatSession:", deleteChatSession);
  runtime.registerClass("WAChatSession");
  runtime.addHostMethod("WAChatSession", "jid", propertyNamedBySelector);
}

Value makeStanza(ObjectRuntime& runtime, const std::string& id, const OptString& fromJID,
                 const OptString& text, const OptString& nickname,
                 std::optional<double> timestamp, const std::optional<Media>& media) {
  Value stanza = runtime.newObject("XMPPMessageStanza");
  setProperty(stanza, "id", stringValue(id));
  setProperty(stanza, "fromJID", stringValue(fromJID));
  setProperty(stanza, "text", stringValue(text));
  setProperty(stanza, "nickname", stringValue(nickname));
  setProperty(stanza, "timestamp", timestamp ? Value::date(*timestamp) : Value());
  setProperty(stanza, "hasMedia", Value::boolean(media.has_value()));
  if (media) {
    setProperty(stanza, "mediaType", Value::integer(media->type));
    setProperty(stanza, "mediaURL", stringValue(media->url));
    setProperty(stanza, "media", runtime.newObject("XMPPMediaElement",
                                                   {{host::T("value"), Value::data(media->bytes)}}));
  }
  return stanza;
}

Value makeOutgoingMessage(ObjectRuntime& runtime, const std::string& id, const OptString& toJID,
                          const OptString& text, std::int64_t messageType, double messageDate) {
  return runtime.newObject("WAMessage", {{host::T("id"), stringValue(id)},
                                         {host::T("toJID"), stringValue(toJID)},
                                         {host::T("text"), stringValue(text)},
                                         {host::T("messageType"), Value::integer(messageType)},
                                         {host::T("messageDate"), Value::date(messageDate)}});
}

Value makeCell(ObjectRuntime& runtime, const OptString& jid, const OptString& name) {
  Value label;
  if (name) label = runtime.newObject("UILabel", {{host::T("text"), stringValue(name)}});
  return runtime.newObject("WAChatSessionCell",
                           {{host::T("jid"), stringValue(jid)}, {host::T("nameLabel"), label}});
}

void tapButton(const std::string& title) {
  const auto& sheets = hostLog().sheets;
  if (sheets.empty()) throw std::runtime_error("no action sheet to tap '" + title + "' on");
  const auto& buttons = sheets.back().buttons;
  auto button = std::find_if(buttons.begin(), buttons.end(),
                             [&](const auto& b) { return b.first == title; });
  if (button == buttons.end()) {
    throw std::runtime_error("the last action sheet has no button '" + title + "'");
  }
  // A handler may build sheets of its own, which moves the records.
  Value handler = button->second;
  handler.invokeBlock();
}

}  // namespace hushwall::simhost
