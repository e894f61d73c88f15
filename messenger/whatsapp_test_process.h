// For the messenger's host tests: a fresh WhatsApp process on a test device,
// with the library loaded the way the device injects it. Each call is a new
// process, so each starts with the library's start-up, as the app would.
// Only for the library_tests binary, whose build says where the library is
// (HUSHWALL_LIBRARY_PATH).
#ifndef HUSHWALL_MESSENGER_WHATSAPP_TEST_PROCESS_H_
#define HUSHWALL_MESSENGER_WHATSAPP_TEST_PROCESS_H_

#include <functional>
#include <string>
#include <vector>

#include "simhost/simulated_app.h"
#include "simhost/test_device.h"
#include "testing/child_process.h"

namespace hushwall::testing {

inline constexpr char kAddStatusBarIcon[] = "com.Corvanta.HushwallSettings.addStatusBarIcon";
inline constexpr char kContactsChanged[] = "com.Corvanta.HushwallSettings.contactsChanged";
inline constexpr char kNewMessagedAdded[] = "com.Corvanta.HushwallSettings.newMessagedAdded";

using WhatsAppBody = std::function<void(simhost::SimulatedApp&, NotificationCounter&)>;
using BeforeLoad = std::function<void(simhost::SimulatedApp&)>;

// `beforeLoad` runs with the app's classes in place but before the library
// hooks them, so what it installs ends up under the library's hooks, where
// the app's own code is.
inline void inWhatsApp(const TestDevice& device, const WhatsAppBody& body,
                       const BeforeLoad& beforeLoad = nullptr) {
  runInChildProcess([&] {
    simhost::SimulatedApp app(device.root(), host::T("net.whatsapp.WhatsApp"),
                              simhost::AppClasses::kWhatsApp);
    NotificationCounter posted(app, {kAddStatusBarIcon, kContactsChanged, kNewMessagedAdded});
    if (beforeLoad) beforeLoad(app);
    app.loadLibrary(HUSHWALL_LIBRARY_PATH);
    body(app, posted);
  });
}

}  // namespace hushwall::testing

#endif  // HUSHWALL_MESSENGER_WHATSAPP_TEST_PROCESS_H_
