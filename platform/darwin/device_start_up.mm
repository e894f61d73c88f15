// What Hushwall.dylib does when it is loaded (load_time_initializer.cpp):
// installs the device's platform as the process's Env and runs the start-up
// routine inside an autorelease pool.
#import <Foundation/Foundation.h>

#include "host/env.h"
#include "platform/darwin/device_services.h"
#include "platform/darwin/objc_runtime.h"
#include "platform/darwin/device_start_up.h"
#include "platform/darwin/exception_barrier.h"
#include "platform/darwin/firmware_gaps.h"
#include "startup/start_up.h"

namespace hushwall::darwin {
namespace {

struct DeviceEnv {
  FoundationFileSystem fileSystem;
  DarwinNotifyCenter notifyCenter;
  ContactsAddressBook addressBook{addressBookFindPerson()};
  AudioSystemSounds systemSounds;
  ApplicationStatusBar statusBar;
  DeviceClock clock;
  FoundationBundles bundles;
  ObjcRuntime runtime{substrateHookMessage()};
  AlertViewAlerts alerts;
  host::Env env;

  DeviceEnv() {
    env.fileSystem = &fileSystem;
    env.notifyCenter = &notifyCenter;
    env.addressBook = &addressBook;
    env.systemSounds = &systemSounds;
    env.statusBar = &statusBar;
    env.clock = &clock;
    env.bundles = &bundles;
    env.runtime = &runtime;
    env.alerts = &alerts;
  }
};

}  // namespace

void startUpOnDevice() {
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  // The platform lives as long as the process: hooks and observers may run
  // until its very end.
  static auto* device = new DeviceEnv;
  host::setEnv(&device->env);
  // A start-up that fails part-way leaves what it installed so far; the
  // host starts either way.
  raisedInside([] { fillFirmwareGaps(); });
  raisedInside([] { HushwallStartUp(); });
  [pool drain];
}

}  // namespace hushwall::darwin
