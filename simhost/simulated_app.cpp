#include "simhost/simulated_app.h"

#include <dlfcn.h>

#include <chrono>
#include <stdexcept>

#include "simhost/springboard_classes.h"
#include "simhost/whatsapp_classes.h"

namespace hushwall::simhost {

SimulatedApp::SimulatedApp(const std::string& deviceRoot, host::OptText bundleIdentifier,
                           AppClasses classes)
    : device_(deviceRoot, std::move(bundleIdentifier)) {
  if (classes == AppClasses::kWhatsApp) registerWhatsAppClasses(device_.runtime());
  if (classes == AppClasses::kSpringBoard) registerSpringBoardClasses(device_.runtime());
  previous_ = host::setEnv(&device_.env());
}

SimulatedApp::~SimulatedApp() { host::setEnv(previous_); }

void SimulatedApp::loadLibrary(const std::string& path) {
  // RTLD_NODELETE: like an injected dylib, it is never unloaded.
  if (::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE) == nullptr) {
    throw std::runtime_error(std::string("cannot load ") + path + ": " + ::dlerror());
  }
}

host::Value SimulatedApp::send(const host::Value& receiver, const host::Selector& selector,
                               const host::Args& args) {
  return runtime().send(receiver, selector, args);
}

host::Value SimulatedApp::sendToClass(const std::string& className, const host::Selector& selector,
                                      const host::Args& args) {
  return runtime().send(runtime().getClass(className), selector, args);
}

host::Value SimulatedApp::make(const std::string& className) {
  return runtime().newObject(className);
}

void SimulatedApp::runLoop(int milliseconds) {
  device_.notifyCenter().runFor(std::chrono::milliseconds(milliseconds));
}

}  // namespace hushwall::simhost
