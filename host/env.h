// Env: everything Hushwall needs of the platform it runs on.
//
// The logic never includes a platform header; it reaches files, the notify
// center, the address book, sounds, the status bar, the clock, bundles, the
// host's object runtime and alerts through the Env of its process. On the
// device the Env is the platform itself, as process-wide as the platform's
// own functions are; on Linux it is the simulated device; in tests it is a
// set of test doubles over a temporary device root.
#ifndef HUSHWALL_HOST_ENV_H_
#define HUSHWALL_HOST_ENV_H_

#include "host/address_book.h"
#include "host/alerts.h"
#include "host/bundle.h"
#include "host/clock.h"
#include "host/file_system.h"
#include "host/notify_center.h"
#include "host/runtime.h"
#include "host/status_bar.h"
#include "host/system_sounds.h"

namespace hushwall::host {

struct Env {
  FileSystem* fileSystem = nullptr;
  NotifyCenter* notifyCenter = nullptr;
  AddressBook* addressBook = nullptr;
  SystemSounds* systemSounds = nullptr;
  StatusBar* statusBar = nullptr;
  Clock* clock = nullptr;
  Bundles* bundles = nullptr;
  Runtime* runtime = nullptr;  // the host's classes and objects
  Alerts* alerts = nullptr;
};

// The Env of this process. The host (the platform adapter, the simulated
// device, or a test) installs it before the library's start-up runs.
Env& env();
// Installs `env` as this process's Env and returns the previous one. The
// caller keeps it alive for as long as it is installed.
Env* setEnv(Env* env);

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_ENV_H_
