// What Hushwall runs inside SpringBoard: the three bulletin hooks, the badge
// hook and the badge increment it adds, and the status-bar observers.
#ifndef HUSHWALL_SPRINGBOARD_HOOKS_H_
#define HUSHWALL_SPRINGBOARD_HOOKS_H_

#include "host/runtime.h"

namespace hushwall {

// -[SBLockScreenNotificationListController observer:addBulletin:forFeed:]
extern host::IMP original_lockScreen_addBulletin;
host::Value hook_lockScreen_addBulletin(const host::Value& self, const host::Selector& cmd,
                                        const host::Args& args);
// The same from iOS 8.0, where the lock screen receives bulletins through
// observer:addBulletin:forFeed:playLightsAndSirens:withReply:.
extern host::IMP original_lockScreen_addBulletinWithReply;
host::Value hook_lockScreen_addBulletinWithReply(const host::Value& self,
                                                 const host::Selector& cmd,
                                                 const host::Args& args);
// -[SBBulletinObserverViewController observer:addBulletin:forFeed:]
extern host::IMP original_notificationCenter_addBulletin;
host::Value hook_notificationCenter_addBulletin(const host::Value& self, const host::Selector& cmd,
                                                const host::Args& args);
// -[SBBulletinBannerController observer:addBulletin:forFeed:]
extern host::IMP original_banner_addBulletin;
host::Value hook_banner_addBulletin(const host::Value& self, const host::Selector& cmd,
                                    const host::Args& args);
// The same from iOS 8.2:
// -[SBBulletinBannerController observer:addBulletin:forFeed:playLightsAndSirens:withReply:]
extern host::IMP original_banner_addBulletinWithReply;
host::Value hook_banner_addBulletinWithReply(const host::Value& self, const host::Selector& cmd,
                                             const host::Args& args);

// -[SBApplication setBadge:]
extern host::IMP original_setBadge;
host::Value hook_setBadge(const host::Value& self, const host::Selector& cmd,
                          const host::Args& args);
// Added to SBBulletinBannerController ("v@:@").
host::Value addManualBadgeIncrementForBundleIdentifier(const host::Value& self,
                                                       const host::Selector& cmd,
                                                       const host::Args& args);
// The one-shot pass for the library's own badge increment.
extern bool acceptBadgeIncrement;

// Observers of the status-bar notifications.
void addStatusBarIconNotif();
void removeStatusBarIconNotif();

}  // namespace hushwall

#endif  // HUSHWALL_SPRINGBOARD_HOOKS_H_
