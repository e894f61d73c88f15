#include "startup/hook_table.h"

#include <cstring>

#include "messenger/hooks.h"
#include "springboard/hooks.h"

namespace hushwall {
namespace {

using Kind = HookEntry::Kind;
using How = HookEntry::How;

// The messenger's methods are WhatsApp's, not the firmware's: a WhatsApp
// version that lacks one simply leaves that hook uninstalled.
constexpr Availability kWhatsAppVersion{0, 0, "WhatsApp's own class, any firmware"};
constexpr Availability kAdded{0, 0, "added by the library, wherever the class exists"};

const HookEntry kWhatsAppEntries[] = {
    {"ChatListViewController", Kind::kInstance, "chatSessionCellShowMoreOptions:", How::kReplace,
     nullptr, &hook_chatSessionCellShowMoreOptions, &original_chatSessionCellShowMoreOptions,
     kWhatsAppVersion},
    {"WABlockBasedActionSheet", Kind::kClass, "actionSheetWithTitle:", How::kReplace, nullptr,
     &hook_actionSheetWithTitle, &original_actionSheetWithTitle, kWhatsAppVersion},
    {"WhatsAppAppDelegate", Kind::kInstance, "applicationDidEnterBackground:", How::kReplace,
     nullptr, &hook_applicationDidEnterBackground, &original_applicationDidEnterBackground,
     kWhatsAppVersion},
    {"WhatsAppAppDelegate", Kind::kInstance, "applicationWillTerminate:", How::kReplace, nullptr,
     &hook_applicationWillTerminate, &original_applicationWillTerminate, kWhatsAppVersion},
    {"WhatsAppAppDelegate", Kind::kInstance, "deleteAllMessagesBlacklisted", How::kAdd, "v@:",
     &deleteAllMessagesBlacklisted, nullptr, kAdded},
    {"WhatsAppAppDelegate", Kind::kInstance, "getSessionsWithPhoneNumber:", How::kAdd, "@@:@",
     &getSessionsWithPhoneNumber, nullptr, kAdded},
    {"XMPPConnection", Kind::kInstance, "processIncomingMessageStanzas:", How::kReplace, nullptr,
     &hook_processIncomingMessageStanzas, &original_processIncomingMessageStanzas,
     kWhatsAppVersion},
    {"XMPPConnection", Kind::kInstance, "sendMessage:", How::kReplace, nullptr, &hook_sendMessage,
     &original_sendMessage, kWhatsAppVersion},
};

// SpringBoard's methods exist on the iOS 7 and 8 generation of SpringBoard.
// The banner and the lock screen moved bulletin delivery to the observer
// protocol's longer method, observer:addBulletin:forFeed:playLightsAndSirens:
// withReply:, the lock screen in iOS 8.0 and the banner in iOS 8.2 (the
// notification centre kept the short one); each gets a second entry over
// the same logic, so the package covers 7.0 to 8.4. Every range is that of
// the class dumps of objchost/springboard_firmware.cpp, which names the
// file and line of each: MP0w/iOS-Headers for 7.0, 7.1, 8.0 and 8.1,
// coleflowers/iOS8-Class-Dump for 8.2, Zob3k/iOS-8.4-Headers-Full for 8.4
// (8.3 has no dump and is taken to be as 8.2 and 8.4, which agree). Later
// SpringBoards replaced these controllers (the lock screen and the banners
// were rebuilt in iOS 10), and the package's firmware range (device/control)
// ends before iOS 9, the first firmware not checked.
const HookEntry kSpringBoardEntries[] = {
    {"SBLockScreenNotificationListController", Kind::kInstance, "observer:addBulletin:forFeed:",
     How::kReplace, nullptr, &hook_lockScreen_addBulletin, &original_lockScreen_addBulletin,
     {700, 800,
      "class dumps of iOS 7.0 and 7.1; from iOS 8.0 the class has only the longer method"}},
    {"SBLockScreenNotificationListController", Kind::kInstance,
     "observer:addBulletin:forFeed:playLightsAndSirens:withReply:", How::kReplace, nullptr,
     &hook_lockScreen_addBulletinWithReply, &original_lockScreen_addBulletinWithReply,
     {800, 900, "class dumps of iOS 8.0, 8.1, 8.2 and 8.4"}},
    {"SBBulletinObserverViewController", Kind::kInstance, "observer:addBulletin:forFeed:",
     How::kReplace, nullptr, &hook_notificationCenter_addBulletin,
     &original_notificationCenter_addBulletin,
     {700, 900, "class dumps of iOS 7.0, 7.1, 8.0, 8.1, 8.2 and 8.4"}},
    {"SBApplication", Kind::kInstance, "setBadge:", How::kReplace, nullptr, &hook_setBadge,
     &original_setBadge,
     {700, 900, "class dumps of iOS 7.0, 7.1, 8.0, 8.1, 8.2 and 8.4"}},
    {"SBBulletinBannerController", Kind::kInstance, "observer:addBulletin:forFeed:", How::kReplace,
     nullptr, &hook_banner_addBulletin, &original_banner_addBulletin,
     {700, 802,
      "class dumps of iOS 7.0 to 8.1; from iOS 8.2 the class has only the longer method"}},
    {"SBBulletinBannerController", Kind::kInstance,
     "observer:addBulletin:forFeed:playLightsAndSirens:withReply:", How::kReplace, nullptr,
     &hook_banner_addBulletinWithReply, &original_banner_addBulletinWithReply,
     {802, 900, "class dumps of iOS 8.2 and 8.4; absent from those of 8.0 and 8.1"}},
    {"SBBulletinBannerController", Kind::kInstance, "addManualBadgeIncrementForBundleIdentifier:",
     How::kAdd, "v@:@", &addManualBadgeIncrementForBundleIdentifier, nullptr, kAdded},
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
