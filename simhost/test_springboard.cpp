#include "simhost/test_springboard.h"

#include "simhost/host_log.h"
#include "simhost/springboard_classes.h"

namespace hushwall::testing {
namespace {

using host::T;
using host::Value;

Value string(const std::string& utf8) { return Value::string(T(utf8)); }

}  // namespace

Value localContext(const std::string& jid) {
  return Value::dictionary({{T("notificationType"), string("AppNotificationLocal")},
                            {T("userInfo"), Value::dictionary({{T("jid"), string(jid)}})}});
}

Value remoteContext(const std::optional<std::string>& body, const std::optional<std::string>& u) {
  host::Dict aps;
  if (body) aps[T("alert")] = Value::dictionary({{T("body"), string(*body)}});
  if (u) aps[T("u")] = string(*u);
  return Value::dictionary({{T("notificationType"), string("AppNotificationRemote")},
                            {T("userInfo"),
                             Value::dictionary({{T("aps"), Value::dictionary(aps)}})}});
}

host::Dict settingsFlags(bool enabled, bool saveHistory, bool showStatusbarIcon, bool vibrate) {
  return {{T("Enabled"), Value::boolean(enabled)},
          {T("SaveHistory"), Value::boolean(saveHistory)},
          {T("ShowStatusbarIcon"), Value::boolean(showStatusbarIcon)},
          {T("Vibrate"), Value::boolean(vibrate)}};
}

TestSpringBoard::TestSpringBoard(const TestDevice& device, const std::string& libraryPath,
                                 const Value& messengerBadge)
    : app_(device.root(), T("com.apple.springboard"), simhost::AppClasses::kSpringBoard) {
  simhost::hostLog() = simhost::HostLog{};
  app_.loadLibrary(libraryPath);
  banner_ = app_.make("SBBulletinBannerController");
  lockScreen_ = app_.make("SBLockScreenNotificationListController");
  notificationCenter_ = app_.make("SBBulletinObserverViewController");
  messenger_ = simhost::addApplication(app_.runtime(), kMessengerId, messengerBadge);
}

Value TestSpringBoard::bulletin(const std::optional<std::string>& sectionID, const Value& context,
                                const std::optional<std::string>& message) {
  return simhost::makeBulletin(app_.runtime(), sectionID, context, message);
}

void TestSpringBoard::hand(const Value& controller, const Value& bulletin) {
  // The observer is some host object; feed 2 stands for any feed.
  app_.send(controller, "observer:addBulletin:forFeed:",
            {app_.make("NSObject"), bulletin, Value::integer(2)});
}

void TestSpringBoard::deliver(const Value& bulletin) {
  deliverToBanner(bulletin);
  deliverToLists(bulletin);
}

void TestSpringBoard::deliverToBanner(const Value& bulletin) { hand(banner_, bulletin); }

void TestSpringBoard::deliverToLists(const Value& bulletin) {
  hand(lockScreen_, bulletin);
  hand(notificationCenter_, bulletin);
}

void TestSpringBoard::deliverWithReply(const Value& bulletin, const Value& reply) {
  for (const Value& controller : {banner_, lockScreen_}) {
    app_.send(controller, "observer:addBulletin:forFeed:playLightsAndSirens:withReply:",
              {app_.make("NSObject"), bulletin, Value::integer(2), Value::boolean(true), reply});
  }
  hand(notificationCenter_, bulletin);
}

std::size_t TestSpringBoard::shown(const std::string& where) const {
  auto it = simhost::hostLog().shown.find(where);
  return it == simhost::hostLog().shown.end() ? 0 : it->second.size();
}

Value TestSpringBoard::messengerBadge() { return app_.send(messenger_, "badgeNumberOrString"); }

bool TestSpringBoard::iconShown() { return app_.device().statusBar().shown().count("HSWL") == 1; }

int TestSpringBoard::vibrations() { return app_.device().systemSounds().vibrations(); }

}  // namespace hushwall::testing
