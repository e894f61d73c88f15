#include "startup/start_up.h"

#include "host/env.h"
#include "model/paths.h"
#include "springboard/hooks.h"
#include "startup/blacklist.h"
#include "startup/hook_table.h"
#include "startup/notification_names.h"
#include "startup/settings.h"

namespace hushwall {
namespace {

// Copies the settings bundle's empty database into place when there is no
// database file. Whatever else is in the data directory goes with it: a
// folder without a database is taken to be left over and is started afresh.
// Each step is tried whatever the one before did, and nothing is reported: a
// failure shows up later as an empty blacklist.
void seedDatabase(host::Env& env) {
  host::FileSystem& fs = *env.fileSystem;
  const host::Text dataDirectory = host::T(kDataDirectory);
  const host::Text database = databasePath();
  if (fs.fileExists(database)) return;
  fs.removeItem(dataDirectory);
  fs.createDirectory(dataDirectory);
  host::OptText bundle = env.bundles->bundlePath(host::T(kSettingsBundlePath));
  if (bundle) {
    fs.copyItem(host::appendingPathComponent(*bundle, host::T(kDatabaseComponent)), database);
  }
}

void observe(host::NotifyCenter& center, const char* name, void (*callback)()) {
  center.addObserver(name, callback, host::SuspensionBehavior::kHold);
}

}  // namespace

void HushwallStartUp() {
  host::Env& env = host::env();
  host::NotifyCenter& center = *env.notifyCenter;

  observe(center, kSettingsChangedNotification, SettingsChanged);
  observe(center, kContactsChangedNotification, ContactsChanged);

  // The comparison is the platform's: case is ignored, and a process whose
  // bundle has no identifier compares equal to the first name asked, so it
  // is given the messenger's group (whose classes it lacks, making every
  // hook a no-op there).
  host::OptText identifier = env.bundles->mainBundleIdentifier();
  if (host::caseInsensitiveEquals(identifier, host::T(kWhatsAppBundleIdentifier))) {
    installHookGroup(*env.runtime, kWhatsAppHooks);
  } else if (host::caseInsensitiveEquals(identifier, host::T(kSpringBoardBundleIdentifier))) {
    observe(center, kRemoveStatusBarIconNotification, removeStatusBarIconNotif);
    observe(center, kAddStatusBarIconNotification, addStatusBarIconNotif);
    seedDatabase(env);
    installHookGroup(*env.runtime, kSpringBoardHooks);
  }

  // Last, so that a freshly seeded database is what is read, and so that
  // the flags and the blacklist are in place before the first hook runs.
  SettingsChanged();
  ContactsChanged();
}

}  // namespace hushwall
