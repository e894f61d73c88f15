#include "simhost/springboard_classes.h"

#include "simhost/host_log.h"

namespace hushwall::simhost {
namespace {

using host::Args;
using host::Selector;
using host::Value;
using linux_platform::ObjectRuntime;

// --- Bulletin delivery: observer, bulletin, feed --------------------------------

Value showBanner(const Value&, const Selector&, const Args& args) {
  hostLog().shown["banner"].push_back(args.at(1));
  return Value();
}

Value showOnLockScreen(const Value&, const Selector&, const Args& args) {
  hostLog().shown["lockscreen"].push_back(args.at(1));
  return Value();
}

Value showInNotificationCenter(const Value&, const Selector&, const Args& args) {
  hostLog().shown["notificationCenter"].push_back(args.at(1));
  return Value();
}

// The same controllers' method from iOS 8.2, with whether to play sounds and
// the reply after the feed.
Value showBannerWithReply(const Value& self, const Selector& cmd, const Args& args) {
  hostLog().shownWithReply.push_back(args);
  return showBanner(self, cmd, args);
}

Value showOnLockScreenWithReply(const Value& self, const Selector& cmd, const Args& args) {
  hostLog().shownWithReply.push_back(args);
  return showOnLockScreen(self, cmd, args);
}

// --- Applications and their badges -------------------------------------------------

Value badgeNumberOrString(const Value& self, const Selector&, const Args&) {
  return property(self, "badge");
}

Value setBadge(const Value& self, const Selector&, const Args& args) {
  setProperty(self, "badge", args.at(0));
  hostLog().badges[utf8(property(self, "bundleIdentifier")).value_or("")] = args.at(0);
  return Value();
}

// One controller per process, kept by its class; it holds the installed
// applications.
Value sharedInstance(const Value& self, const Selector&, const Args&) {
  Value controller = property(self, "sharedInstance");
  if (controller.isNil()) {
    controller = runtimeOf(self).newObject("SBApplicationController",
                                           {{host::T("applications"), Value::array({})}});
    setProperty(self, "sharedInstance", controller);
  }
  return controller;
}

Value applicationsWithBundleIdentifier(const Value& self, const Selector&, const Args& args) {
  host::Array matching;
  const Value applications = property(self, "applications");
  if (const host::Array* all = applications.array()) {
    for (const Value& app : *all) {
      if (property(app, "bundleIdentifier") == args.at(0)) matching.push_back(app);
    }
  }
  return Value::array(std::move(matching));
}

}  // namespace

void registerSpringBoardClasses(ObjectRuntime& runtime) {
  const char* kAddBulletin = "observer:addBulletin:forFeed:";
  runtime.registerClass("SBBulletinBannerController");
  runtime.addHostMethod("SBBulletinBannerController", kAddBulletin, showBanner);
  runtime.registerClass("SBLockScreenNotificationListController");
  runtime.addHostMethod("SBLockScreenNotificationListController", kAddBulletin, showOnLockScreen);
  const char* kAddBulletinWithReply = "observer:addBulletin:forFeed:playLightsAndSirens:withReply:";
  runtime.addHostMethod("SBBulletinBannerController", kAddBulletinWithReply, showBannerWithReply);
  runtime.addHostMethod("SBLockScreenNotificationListController", kAddBulletinWithReply,
                        showOnLockScreenWithReply);
  runtime.registerClass("SBBulletinObserverViewController");
  runtime.addHostMethod("SBBulletinObserverViewController", kAddBulletin,
                        showInNotificationCenter);

  runtime.registerClass("BBBulletin");
  for (const char* getter : {"sectionID", "context", "message"}) {
    runtime.addHostMethod("BBBulletin", getter, propertyNamedBySelector);
  }

  runtime.registerClass("SBApplication");
  runtime.addHostMethod("SBApplication", "bundleIdentifier", propertyNamedBySelector);
  runtime.addHostMethod("SBApplication", "badgeNumberOrString", badgeNumberOrString);
  runtime.addHostMethod("SBApplication", "setBadge:", setBadge);
  runtime.registerClass("SBApplicationController");
  runtime.addHostMethod("SBApplicationController", "sharedInstance", sharedInstance, true);
  runtime.addHostMethod("SBApplicationController", "applicationsWithBundleIdentifier:",
                        applicationsWithBundleIdentifier);
}

Value makeBulletin(ObjectRuntime& runtime, const OptString& sectionID, const Value& context,
                   const OptString& message) {
  return runtime.newObject("BBBulletin", {{host::T("sectionID"), stringValue(sectionID)},
                                          {host::T("context"), context},
                                          {host::T("message"), stringValue(message)}});
}

Value addApplication(ObjectRuntime& runtime, const std::string& bundleId, const Value& badge) {
  Value app = runtime.newObject("SBApplication", {{host::T("bundleIdentifier"), stringValue(bundleId)},
                                                  {host::T("badge"), badge}});
  Value controller = runtime.send(runtime.getClass("SBApplicationController"), "sharedInstance", {});
  host::Array all;
  const Value applications = property(controller, "applications");
  if (const host::Array* known = applications.array()) all = *known;
  all.push_back(app);
  setProperty(controller, "applications", Value::array(std::move(all)));
  return app;
}

}  // namespace hushwall::simhost
