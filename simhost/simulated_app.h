// One simulated app process: the device's platform for this process, the
// app's own classes in the object runtime, and the injection of the library,
// in the order the device does it (the app's classes exist before the
// library's start-up runs).
#ifndef HUSHWALL_SIMHOST_SIMULATED_APP_H_
#define HUSHWALL_SIMHOST_SIMULATED_APP_H_

#include <string>

#include "platform/linux/linux_device.h"

namespace hushwall::simhost {

enum class AppClasses { kWhatsApp, kSpringBoard, kNone };

class SimulatedApp {
 public:
  // The device root must have its bus running. Installs this process's Env.
  SimulatedApp(const std::string& deviceRoot, host::OptText bundleIdentifier, AppClasses classes);
  ~SimulatedApp();
  SimulatedApp(const SimulatedApp&) = delete;
  SimulatedApp& operator=(const SimulatedApp&) = delete;

  // dlopen()s the library; its load-time initialiser runs start-up. Throws
  // std::runtime_error with dlerror()'s text when it cannot be loaded. The
  // library stays loaded for the life of the process, as on the device.
  void loadLibrary(const std::string& path);

  linux_platform::LinuxDevice& device() { return device_; }
  linux_platform::ObjectRuntime& runtime() { return device_.runtime(); }

  // Messages to host objects, as the app's own code would send them.
  host::Value send(const host::Value& receiver, const host::Selector& selector,
                   const host::Args& args = {});
  host::Value sendToClass(const std::string& className, const host::Selector& selector,
                          const host::Args& args = {});
  // A new instance of one of the app's classes.
  host::Value make(const std::string& className);

  // Runs the main loop for a while, delivering notifications.
  void runLoop(int milliseconds = 50);

 private:
  linux_platform::LinuxDevice device_;
  host::Env* previous_;
};

}  // namespace hushwall::simhost

#endif  // HUSHWALL_SIMHOST_SIMULATED_APP_H_
