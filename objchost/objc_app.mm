#include "objchost/objc_app.h"

#import <Foundation/Foundation.h>

#include <dlfcn.h>

#include <stdexcept>

#include <gtest/gtest.h>

#include "testing/child_process.h"

namespace hushwall::objchost {

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
