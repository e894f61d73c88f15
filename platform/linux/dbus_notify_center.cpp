#include "platform/linux/dbus_notify_center.h"

#include <poll.h>

#include <sdbus-c++/sdbus-c++.h>

#include "platform/linux/dbus_signal_name.h"

namespace hushwall::linux_platform {

void checkNotificationName(const std::string& name) { (void)signalNameOf(name); }

DBusNotifyCenter::DBusNotifyCenter(const std::string& busAddress)
    : connection_(sdbus::createSessionBusConnectionWithAddress(busAddress)),
      root_(sdbus::createObject(*connection_, "/")),
      busDaemon_(sdbus::createProxy(*connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus")) {}

DBusNotifyCenter::~DBusNotifyCenter() = default;

void DBusNotifyCenter::post(const std::string& name) {
  SignalName signal = signalNameOf(name);
  root_->emitSignal(root_->createSignal(signal.interface, signal.member));
  // A signal that did not fit the socket at once waits in the connection's
  // queue, and would be lost if the process ended now. A round trip to the
  // bus daemon writes the queue out without dispatching anything; the
  // observers are not waited for.
  if (connection_->getEventLoopPollData().events & POLLOUT) {
    busDaemon_->createMethodCall("org.freedesktop.DBus.Peer", "Ping").send(0);
  }
}

void DBusNotifyCenter::addObserver(const std::string& name, Callback callback,
                                   host::SuspensionBehavior behavior) {
  SignalName signal = signalNameOf(name);
  // Any sender and any path: posts from outside the library must be heard.
  std::string rule =
      "type='signal',interface='" + signal.interface + "',member='" + signal.member + "'";
  connection_->addMatch(
      rule,
      [this, callback = std::move(callback)](sdbus::Message&) {
        ++deliveries_;
        callback();
      },
      sdbus::floating_slot);
  observations_.push_back({name, behavior});
}

void DBusNotifyCenter::roundTripToBus() {
  busDaemon_->createMethodCall("org.freedesktop.DBus.Peer", "Ping").send(0);
}

std::string DBusNotifyCenter::uniqueName() const { return connection_->getUniqueName(); }

sdbus::IConnection::PollData DBusNotifyCenter::pollData() const {
  return connection_->getEventLoopPollData();
}

bool DBusNotifyCenter::processPending() {
  std::uint64_t before = deliveries_;
  while (connection_->processPendingRequest()) {
  }
  return deliveries_ != before;
}

void DBusNotifyCenter::runFor(std::chrono::milliseconds duration) {
  runUntil([] { return false; }, duration);
}

bool DBusNotifyCenter::runUntil(const std::function<bool()>& done,
                                std::chrono::milliseconds timeout) {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + timeout;
  for (;;) {
    processPending();
    if (done()) return true;
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) return false;
    auto data = pollData();
    int wait = data.getPollTimeout();
    if (wait < 0 || wait > left.count()) wait = static_cast<int>(left.count());
    pollfd fd{data.fd, data.events, 0};
    ::poll(&fd, 1, wait);  // an interruption just means one more round
  }
}

}  // namespace hushwall::linux_platform
