// What every Objective-C host process does before the tweak is injected:
// boot the stand-in device, count the notifications it will want to wait
// for, and then load the adapter library as the Substrate loader would.
#ifndef HUSHWALL_OBJCHOST_OBJC_APP_H_
#define HUSHWALL_OBJCHOST_OBJC_APP_H_

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace hushwall::objchost {

// Counts Darwin notifications of the given names that reach this process
// (its own posts included), through the CoreFoundation center.
class DarwinCounter {
 public:
  explicit DarwinCounter(const std::vector<std::string>& names);
  int count(const std::string& name) const;
  // Runs the main loop until everything this process posted so far has come
  // back to it. False after five seconds.
  bool settle();
};

// Runs `body` in a child process of its own (testing/child_process.h) with
// an autorelease pool, reporting an Objective-C exception as a failure with
// its name and reason.
void inObjcProcess(const std::function<void()>& body);

// dlopen()s the adapter library; its constructor runs the tweak's start-up.
// Throws std::runtime_error with dlerror()'s text.
void injectTweak();

}  // namespace hushwall::objchost

#endif  // HUSHWALL_OBJCHOST_OBJC_APP_H_
