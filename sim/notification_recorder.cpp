#include "sim/notification_recorder.h"

#include <sdbus-c++/sdbus-c++.h>

namespace hushwall::sim {

NotificationRecorder::NotificationRecorder(const std::string& busAddress)
    : connection_(sdbus::createSessionBusConnectionWithAddress(busAddress)),
      busDaemon_(sdbus::createProxy(*connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus")) {
  connection_->addMatch(
      "type='signal',interface='com.Corvanta.HushwallSettings'",
      [this](sdbus::Message& signal) {
        heard_.push_back({signal.getInterfaceName() + "." + signal.getMemberName(), signal.getSender()});
      },
      sdbus::floating_slot);
}

NotificationRecorder::~NotificationRecorder() = default;

void NotificationRecorder::sync() {
  busDaemon_->createMethodCall("org.freedesktop.DBus.Peer", "Ping").send(0);
  while (connection_->processPendingRequest()) {
  }
}

}  // namespace hushwall::sim
