// Stand-ins for the SpringBoard classes that Hushwall hooks or talks to. Each
// implementation records what it received in hostLog().
//
//  - SBBulletinBannerController, SBLockScreenNotificationListController,
//    SBBulletinObserverViewController: observer:addBulletin:forFeed: shows
//    the bulletin (hostLog().shown "banner", "lockscreen",
//    "notificationCenter").
//  - BBBulletin: sectionID, context, message.
//  - SBApplication: bundleIdentifier, badgeNumberOrString, setBadge:.
//  - SBApplicationController: +sharedInstance,
//    applicationsWithBundleIdentifier: over the applications added with
//    addApplication.
#ifndef HUSHWALL_SIMHOST_SPRINGBOARD_CLASSES_H_
#define HUSHWALL_SIMHOST_SPRINGBOARD_CLASSES_H_

#include <string>

#include "host/value.h"
#include "platform/linux/object_runtime.h"
#include "simhost/object_access.h"

namespace hushwall::simhost {

void registerSpringBoardClasses(linux_platform::ObjectRuntime& runtime);

host::Value makeBulletin(linux_platform::ObjectRuntime& runtime, const OptString& sectionID,
                         const host::Value& context, const OptString& message);

// Installs an application with the given badge; SpringBoard's application
// controller knows it from then on.
host::Value addApplication(linux_platform::ObjectRuntime& runtime, const std::string& bundleId,
                           const host::Value& badge);

}  // namespace hushwall::simhost

#endif  // HUSHWALL_SIMHOST_SPRINGBOARD_CLASSES_H_
