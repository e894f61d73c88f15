#include <CoreFoundation/CoreFoundation.h>

#import <Foundation/Foundation.h>

#include <map>
#include <vector>

#include "platform/darwin/device_services.h"
#include "platform/darwin/exception_barrier.h"

namespace hushwall::darwin {
namespace {

std::map<std::string, std::vector<host::NotifyCenter::Callback>>& observers() {
  static auto* all = new std::map<std::string, std::vector<host::NotifyCenter::Callback>>;
  return *all;
}

// Whatever the center passes besides the name is ignored: a Darwin
// notification carries nothing else.
void deliver(CFNotificationCenterRef, void*, CFStringRef name, const void*, CFDictionaryRef) {
  NSString* string = (NSString*)name;
  if (string == nil) return;
  auto found = observers().find([string UTF8String]);
  if (found == observers().end()) return;
  // A copy: a callback may add observers of its own.
  const std::vector<host::NotifyCenter::Callback> callbacks = found->second;
  for (const auto& callback : callbacks) raisedInside(callback);
}

}  // namespace

void DarwinNotifyCenter::post(const std::string& name) {
  CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(),
                                       (CFStringRef)[NSString stringWithUTF8String:name.c_str()],
                                       nullptr, nullptr, true);
}

void DarwinNotifyCenter::addObserver(const std::string& name, Callback callback,
                                     host::SuspensionBehavior behavior) {
  auto& callbacks = observers()[name];
  callbacks.push_back(std::move(callback));
  // The center is asked once per name; later observers of the name ride on
  // that registration, so none runs twice for one notification.
  if (callbacks.size() > 1) return;
  CFNotificationCenterAddObserver(CFNotificationCenterGetDarwinNotifyCenter(), nullptr, &deliver,
                                  (CFStringRef)[NSString stringWithUTF8String:name.c_str()],
                                  nullptr, static_cast<CFNotificationSuspensionBehavior>(behavior));
}

}  // namespace hushwall::darwin
