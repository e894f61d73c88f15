// The Darwin notify center over the simulated device's D-Bus: a post is one
// signal on the bus, and every process that observes the name hears it,
// the poster included. Callbacks run from CFRunLoopRunInMode, on the thread
// that runs the loop, as the device delivers them on the main run loop.
#include <CoreFoundation/CoreFoundation.h>

#import <Foundation/Foundation.h>

#include <chrono>
#include <string>

#include "platform/gnustep/stand_in_device.h"
#include "platform/linux/dbus_notify_center.h"

// The one Darwin center of the process; its address is all callers see.
struct __CFNotificationCenter {};

namespace {

__CFNotificationCenter darwinCenter;

std::string utf8(CFStringRef name) {
  NSString* string = (NSString*)name;
  return string == nil ? std::string() : std::string([string UTF8String]);
}

hushwall::host::SuspensionBehavior behaviorOf(CFNotificationSuspensionBehavior behavior) {
  return static_cast<hushwall::host::SuspensionBehavior>(behavior);
}

}  // namespace

extern "C" {

const CFStringRef kCFRunLoopDefaultMode = (CFStringRef)@"kCFRunLoopDefaultMode";

CFNotificationCenterRef CFNotificationCenterGetDarwinNotifyCenter(void) { return &darwinCenter; }

void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer,
                                     CFNotificationCallback callBack, CFStringRef name,
                                     const void* object,
                                     CFNotificationSuspensionBehavior suspensionBehavior) {
  if (center != &darwinCenter || callBack == nullptr || name == nullptr) return;
  NSString* retainedName = [(NSString*)name copy];  // kept for the observer's life
  void* observerPointer = const_cast<void*>(observer);
  hushwall::gnustep::darwinNotifyCarrier().addObserver(
      utf8(name),
      [center, observerPointer, callBack, retainedName, object] {
        // Darwin notifications carry no user information.
        callBack(center, observerPointer, (CFStringRef)retainedName, object, nullptr);
      },
      behaviorOf(suspensionBehavior));
}

void CFNotificationCenterPostNotification(CFNotificationCenterRef center, CFStringRef name,
                                          const void*, CFDictionaryRef, Boolean) {
  if (center != &darwinCenter || name == nullptr) return;
  hushwall::gnustep::darwinNotifyCarrier().post(utf8(name));
}

SInt32 CFRunLoopRunInMode(CFStringRef, CFTimeInterval seconds, Boolean returnAfterSourceHandled) {
  auto& carrier = hushwall::gnustep::darwinNotifyCarrier();
  const auto timeout = std::chrono::milliseconds(static_cast<long long>(seconds * 1000.0));
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  SInt32 result = kCFRunLoopRunTimedOut;
  if (returnAfterSourceHandled) {
    bool handled = false;
    carrier.runUntil([&] { return handled || (handled = carrier.processPending()); }, timeout);
    if (handled) result = kCFRunLoopRunHandledSource;
  } else {
    carrier.runFor(timeout);
  }
  [pool drain];
  return result;
}

}  // extern "C"
