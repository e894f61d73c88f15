#include "startup/hook_table.h"

#include <cstring>

#include "messenger/hooks.h"
#include "springboard/hooks.h"

namespace hushwall {
namespace {

using Kind = HookEntry::Kind;
using How = HookEntry::How;

const HookEntry kWhatsAppEntries[] = {
    {"ChatListViewController", Kind::kInstance, "chatSessionCellShowMoreOptions:", How::kReplace,
     nullptr, &hook_chatSessionCellShowMoreOptions, &original_chatSessionCellShowMoreOptions},
    {"WABlockBasedActionSheet", Kind::kClass, "actionSheetWithTitle:", How::kReplace, nullptr,
     &hook_actionSheetWithTitle, &original_actionSheetWithTitle},
    {"WhatsAppAppDelegate", Kind::kInstance, "applicationDidEnterBackground:", How::kReplace,
     nullptr, &hook_applicationDidEnterBackground, &original_applicationDidEnterBackground},
    {"WhatsAppAppDelegate", Kind::kInstance, "applicationWillTerminate:", How::kReplace, nullptr,
     &hook_applicationWillTerminate, &original_applicationWillTerminate},
    {"WhatsAppAppDelegate", Kind::kInstance, "deleteAllMessagesBlacklisted", How::kAdd, "v@:",
     &deleteAllMessagesBlacklisted, nullptr},
    {"WhatsAppAppDelegate", Kind::kInstance, "getSessionsWithPhoneNumber:", How::kAdd, "@@:@",
     &getSessionsWithPhoneNumber, nullptr},
    {"XMPPConnection", Kind::kInstance, "processIncomingMessageStanzas:", How::kReplace, nullptr,
     &hook_processIncomingMessageStanzas, &original_processIncomingMessageStanzas},
    {"XMPPConnection", Kind::kInstance, "sendMessage:", How::kReplace, nullptr, &hook_sendMessage,
     &original_sendMessage},
};

const HookEntry kSpringBoardEntries[] = {
    {"SBLockScreenNotificationListController", Kind::kInstance, "observer:addBulletin:forFeed:",
     How::kReplace, nullptr, &hook_lockScreen_addBulletin, &original_lockScreen_addBulletin},
    {"SBBulletinObserverViewController", Kind::kInstance, "observer:addBulletin:forFeed:",
     How::kReplace, nullptr, &hook_notificationCenter_addBulletin,
     &original_notificationCenter_addBulletin},
    {"SBApplication", Kind::kInstance, "setBadge:", How::kReplace, nullptr, &hook_setBadge,
     &original_setBadge},
    {"SBBulletinBannerController", Kind::kInstance, "observer:addBulletin:forFeed:", How::kReplace,
     nullptr, &hook_banner_addBulletin, &original_banner_addBulletin},
    {"SBBulletinBannerController", Kind::kInstance, "addManualBadgeIncrementForBundleIdentifier:",
     How::kAdd, "v@:@", &addManualBadgeIncrementForBundleIdentifier, nullptr},
};

}  // namespace

const HookGroup kWhatsAppHooks{"WHATSAPP", kWhatsAppEntries, std::size(kWhatsAppEntries)};
const HookGroup kSpringBoardHooks{"SPRINGBOARD", kSpringBoardEntries, std::size(kSpringBoardEntries)};

void installHookGroup(host::Runtime& runtime, const HookGroup& group) {
  const char* lookedUp = nullptr;
  host::Value cls;
  for (std::size_t i = 0; i < group.count; ++i) {
    const HookEntry& entry = group.entries[i];
    if (lookedUp == nullptr || std::strcmp(lookedUp, entry.className) != 0) {
      cls = runtime.getClass(entry.className);
      lookedUp = entry.className;
    }
    host::Value target = entry.kind == HookEntry::Kind::kClass ? runtime.getMetaClass(cls) : cls;
    if (entry.how == HookEntry::How::kReplace) {
      runtime.hookMessage(target, entry.selector, entry.implementation, entry.slot);
    } else {
      runtime.addMethod(target, entry.selector, entry.implementation, entry.types);
    }
  }
}

}  // namespace hushwall
