// SpringBoard with the library loaded, for tests: the three bulletin
// controllers, the messenger's application with a badge, and the ways the
// host hands them things. Made inside the test's child process.
#ifndef HUSHWALL_SIMHOST_TEST_SPRINGBOARD_H_
#define HUSHWALL_SIMHOST_TEST_SPRINGBOARD_H_

#include <cstddef>
#include <optional>
#include <string>

#include "host/value.h"
#include "simhost/simulated_app.h"
#include "simhost/test_device.h"

namespace hushwall::testing {

inline constexpr char kMessengerId[] = "net.whatsapp.WhatsApp";

// A messenger notification raised by the messenger itself.
host::Value localContext(const std::string& jid);
// A push notification; an absent part is a key the push lacks.
host::Value remoteContext(const std::optional<std::string>& body,
                          const std::optional<std::string>& u);
// The settings file's flags.
host::Dict settingsFlags(bool enabled, bool saveHistory, bool showStatusbarIcon, bool vibrate);

class TestSpringBoard {
 public:
  // Starts SpringBoard on the device and loads the library; the messenger
  // is installed with `messengerBadge`. Clears the host log.
  TestSpringBoard(const TestDevice& device, const std::string& libraryPath,
                  const host::Value& messengerBadge = host::Value());

  simhost::SimulatedApp& app() { return app_; }
  const host::Value& messenger() const { return messenger_; }

  host::Value bulletin(const std::optional<std::string>& sectionID, const host::Value& context,
                       const std::optional<std::string>& message = std::string("Alice: hello"));
  // SpringBoard hands the bulletin to the banner, the lock screen and the
  // notification centre, in that order.
  void deliver(const host::Value& bulletin);
  void deliverToBanner(const host::Value& bulletin);
  void deliverToLists(const host::Value& bulletin);
  // As SpringBoard does from iOS 8.2: the banner and the lock screen get the
  // longer method, with `reply` last; the notification centre the short one.
  void deliverWithReply(const host::Value& bulletin, const host::Value& reply);

  // How many bulletins reached "banner", "lockscreen", "notificationCenter".
  std::size_t shown(const std::string& where) const;
  // The messenger's badge as SpringBoard shows it.
  host::Value messengerBadge();
  bool iconShown();
  int vibrations();

 private:
  void hand(const host::Value& controller, const host::Value& bulletin);

  simhost::SimulatedApp app_;
  host::Value banner_, lockScreen_, notificationCenter_, messenger_;
};

}  // namespace hushwall::testing

#endif  // HUSHWALL_SIMHOST_TEST_SPRINGBOARD_H_
