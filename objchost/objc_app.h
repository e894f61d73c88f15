// What an Objective-C host test process does around the tweak: run in a
// process of its own, and load the adapter library as the Substrate loader
// would.
#ifndef HUSHWALL_OBJCHOST_OBJC_APP_H_
#define HUSHWALL_OBJCHOST_OBJC_APP_H_

#include <functional>
#include <string>

namespace hushwall::objchost {

// Runs `body` in a child process of its own (testing/child_process.h) with
// an autorelease pool, reporting an Objective-C exception as a failure with
// its name and reason.
void inObjcProcess(const std::function<void()>& body);

// dlopen()s the adapter library; its constructor runs the tweak's start-up.
// Throws std::runtime_error with dlerror()'s text.
void injectTweak();

}  // namespace hushwall::objchost

#endif  // HUSHWALL_OBJCHOST_OBJC_APP_H_
