#include "objchost/objc_app.h"

#include <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

#include <dlfcn.h>

#include <chrono>
#include <stdexcept>

#include <gtest/gtest.h>

#include "testing/child_process.h"

namespace hushwall::objchost {
namespace {

constexpr char kBarrier[] = "com.Corvanta.HushwallTests.barrier";

std::map<std::string, int>& counts() {
  static auto* all = new std::map<std::string, int>;
  return *all;
}

void counted(CFNotificationCenterRef, void*, CFStringRef name, const void*, CFDictionaryRef) {
  ++counts()[[(NSString*)name UTF8String]];
}

}  // namespace

DarwinCounter::DarwinCounter(const std::vector<std::string>& names) {
  std::vector<std::string> all = names;
  all.push_back(kBarrier);
  for (const std::string& name : all) {
    counts()[name] = 0;
    CFNotificationCenterAddObserver(CFNotificationCenterGetDarwinNotifyCenter(), nullptr, &counted,
                                    (CFStringRef)[NSString stringWithUTF8String:name.c_str()],
                                    nullptr, CFNotificationSuspensionBehaviorHold);
  }
}

int DarwinCounter::count(const std::string& name) const {
  auto found = counts().find(name);
  if (found == counts().end()) throw std::invalid_argument("not counting " + name);
  return found->second;
}

bool DarwinCounter::settle() {
  const int before = count(kBarrier);
  CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(),
                                       (CFStringRef)[NSString stringWithUTF8String:kBarrier],
                                       nullptr, nullptr, true);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (count(kBarrier) <= before) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.1, true);
  }
  return true;
}

void inObjcProcess(const std::function<void()>& body) {
  testing::runInChildProcess([&] {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    @try {
      body();
    } @catch (NSException* exception) {
      ADD_FAILURE() << "Objective-C exception " << [[exception name] UTF8String] << ": "
                    << [[exception reason] UTF8String];
    }
    [pool drain];
  });
}

void injectTweak() {
  if (::dlopen(HUSHWALL_DEVICE_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE) == nullptr) {
    throw std::runtime_error(std::string("cannot load the tweak: ") + ::dlerror());
  }
}

}  // namespace hushwall::objchost
