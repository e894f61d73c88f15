// The three replacements of observer:addBulletin:forFeed: inside SpringBoard,
// and of its longer form on the lock screen (from iOS 8.0) and the banner
// (from iOS 8.2).
// The lock-screen list and the notification centre only drop a blocked
// sender's bulletin; the banner controller is the one place where a blocked
// notification is recorded, announced with the icon and felt as a vibration,
// and where the messenger's badge is raised for what is let through.
//
// Arguments as SpringBoard passes them: observer, bulletin, feed. The
// original implementation always gets them back exactly as received.
#include <cstddef>

#include "host/env.h"
#include "model/hushwall.h"
#include "springboard/hooks.h"
#include "springboard/runtime_bulletin.h"
#include "startup/settings.h"
#include "startup/start_up.h"

namespace hushwall {

host::IMP original_lockScreen_addBulletin = nullptr;
host::IMP original_notificationCenter_addBulletin = nullptr;
host::IMP original_banner_addBulletin = nullptr;
host::IMP original_lockScreen_addBulletinWithReply = nullptr;
host::IMP original_banner_addBulletinWithReply = nullptr;

namespace {

using host::Args;
using host::OptText;
using host::Selector;
using host::Value;

constexpr std::size_t kBulletinArgument = 1;

bool isString(const Value& value, const char* expected) {
  return value.text() == host::T(expected);
}

// The two lists share their steps but not their slots: each calls the
// implementation it replaced on its own class.
Value dropBlockedOrPassOn(host::IMP original, const Value& self, const Selector& cmd,
                          const Args& args) {
  // Only the model's own test: the lists never record, vibrate or touch the
  // badge, so a bulletin that reaches the lists alone leaves no trace.
  if (settings_Enabled &&
      Hushwall::sharedInstance()->isBulletinBlocked(RuntimeBulletin(args.at(kBulletinArgument)))) {
    return Value();
  }
  return original(self, cmd, args);
}

// The badge is taken out of the messenger's hands (its own non-zero values
// are dropped), so every notification let through must raise it here.
void raiseMessengerBadge(const Value& bannerController, const OptText& sectionID) {
  host::env().runtime->send(bannerController, "addManualBadgeIncrementForBundleIdentifier:",
                            {Value::string(sectionID)});
}

}  // namespace

Value hook_lockScreen_addBulletin(const Value& self, const Selector& cmd, const Args& args) {
  return dropBlockedOrPassOn(original_lockScreen_addBulletin, self, cmd, args);
}

Value hook_lockScreen_addBulletinWithReply(const Value& self, const Selector& cmd,
                                           const Args& args) {
  return dropBlockedOrPassOn(original_lockScreen_addBulletinWithReply, self, cmd, args);
}

Value hook_notificationCenter_addBulletin(const Value& self, const Selector& cmd,
                                          const Args& args) {
  return dropBlockedOrPassOn(original_notificationCenter_addBulletin, self, cmd, args);
}

namespace {

// The banner's steps, for either shape of the method: the observer, the
// bulletin and the feed lead, and whatever follows (from iOS 8.2, whether
// to play sounds and the reply) is handed on as received, like the rest.
// A swallowed bulletin's reply is not called, as for any bulletin the
// banner controller never sees.
Value bannerAddBulletin(host::IMP original, const Value& self, const Selector& cmd,
                        const Args& args) {
  // Switched off, the badge is the messenger's own again: no increment.
  if (!settings_Enabled) return original(self, cmd, args);

  const RuntimeBulletin bulletin(args.at(kBulletinArgument));
  // Exact comparison: the messenger's bulletins carry its identifier as is,
  // and an app that merely resembles it must not move the messenger's badge.
  const OptText sectionID = bulletin.sectionID();
  if (sectionID != host::T(kWhatsAppBundleIdentifier)) {
    return original(self, cmd, args);
  }

  const Value context = bulletin.context();
  const Value type = context.objectForKey("notificationType");
  if (type.isNil()) return original(self, cmd, args);

  // The banner does its own inline test rather than isBulletinBlocked:
  // it needs the number, name and text along the way for the history.
  Hushwall* model = Hushwall::sharedInstance();
  if (isString(type, "AppNotificationLocal")) {
    const Value userInfo = context.objectForKey("userInfo");
    if (userInfo.isNil() || userInfo.objectForKey("jid").isNil()) {
      // A sender we cannot read is let through, but not counted: the badge
      // only rises for notifications we know to be from an allowed sender.
      return original(self, cmd, args);
    }
    const OptText phoneNumber = model->getPhoneNumber(userInfo.objectForKey("jid").text());
    if (!model->phoneNumberBlacklisted(phoneNumber)) {
      raiseMessengerBadge(self, sectionID);
      return original(self, cmd, args);
    }

    // The messenger's own notification text is "Name: message".
    const OptText text = bulletin.message();
    const OptText message = model->getMessage(text);
    const host::Text name = model->getName(text);
    // One time for both the duplicate test and the record, so that the row
    // written is the one the next duplicate test measures against.
    const double now = host::env().clock->now();
    // The messenger's own filter, or an earlier banner, usually has recorded
    // this very message a moment ago: swallow it without a second row,
    // icon or vibration.
    if (model->existMessage(message, phoneNumber, now)) return Value();

    // Here the icon setting, not SaveHistory, decides whether the entry is
    // written, and SaveHistory is not read at all: for a local notification
    // the row exists to back the icon the user asked for ("something was
    // blocked, look in the history"). Installed users' histories depend on
    // this pairing, so it stays.
    if (settings_ShowStatusBarIcon) {
      model->addHistoryWithPhoneNumber(phoneNumber, name, message, now,
                                       kBLOCK_TYPE_NOTIFICATION, false);
      // Read again on purpose: the icon follows the flag as it stands after
      // the database write, not a copy taken before it.
      if (settings_ShowStatusBarIcon) model->addStatusBarIcon();
    }
  } else if (isString(type, "AppNotificationRemote")) {
    const Value userInfo = context.objectForKey("userInfo");
    const Value aps = userInfo.objectForKey("aps");
    if (userInfo.isNil() || aps.isNil() || aps.objectForKey("alert").objectForKey("body").isNil()) {
      return original(self, cmd, args);
    }
    // Worked out before we know whether the push names a sender at all, so a
    // text that ends in its colon fails the same way with or without one.
    const OptText body = aps.objectForKey("alert").objectForKey("body").text();
    const OptText message = model->getMessage(body);
    const host::Text name = model->getName(body);

    // Without "u" the push names no sender we could judge: it is handed on
    // uncounted, even if its text shows a blacklisted contact's name.
    const Value u = aps.objectForKey("u");
    if (u.isNil()) return original(self, cmd, args);
    // Taken as it stands, server part and all: the blacklist matches by
    // containment, so a listed number is still found inside the address.
    const OptText phoneNumber = u.text();
    if (!model->phoneNumberBlacklisted(phoneNumber)) {
      raiseMessengerBadge(self, sectionID);
      return original(self, cmd, args);
    }

    const double now = host::env().clock->now();
    if (model->existMessage(message, phoneNumber, now)) return Value();
    // A push is a message the messenger never saw, so this row may be the
    // only record of it: the history setting decides, as in the messenger.
    if (settings_SaveHistory) {
      model->addHistoryWithPhoneNumber(phoneNumber, name, message, now,
                                       kBLOCK_TYPE_NOTIFICATION, false);
    }
    if (settings_ShowStatusBarIcon) model->addStatusBarIcon();
  } else {
    return original(self, cmd, args);
  }

  // Blocked and swallowed: the banner never shows, but the user who asked
  // for it still feels that something arrived.
  if (settings_Vibrate) host::env().systemSounds->play(host::kSystemSoundVibrate);
  return Value();
}

}  // namespace

Value hook_banner_addBulletin(const Value& self, const Selector& cmd, const Args& args) {
  return bannerAddBulletin(original_banner_addBulletin, self, cmd, args);
}

Value hook_banner_addBulletinWithReply(const Value& self, const Selector& cmd, const Args& args) {
  return bannerAddBulletin(original_banner_addBulletinWithReply, self, cmd, args);
}

}  // namespace hushwall
