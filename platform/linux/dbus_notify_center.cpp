#include "platform/linux/dbus_notify_center.h"

#include <poll.h>

#include <algorithm>
#include <stdexcept>

#include <sdbus-c++/sdbus-c++.h>

namespace hushwall::linux_platform {
namespace {

struct SignalName {
  std::string interface;
  std::string member;
};

// One element of a D-Bus name: ASCII letters, digits and "_", not starting
// with a digit.
bool validElement(const std::string& element) {
  auto wordChar = [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
  };
  return !element.empty() && !(element[0] >= '0' && element[0] <= '9') &&
         std::all_of(element.begin(), element.end(), wordChar);
}

bool validInterface(const std::string& interface) {
  if (interface.size() > 255) return false;
  std::size_t start = 0, elements = 0;
  for (;;) {
    std::size_t dot = interface.find('.', start);
    if (!validElement(interface.substr(start, dot - start))) return false;
    ++elements;
    if (dot == std::string::npos) return elements >= 2;
    start = dot + 1;
  }
}

SignalName signalNameOf(const std::string& name) {
  std::size_t dot = name.rfind('.');
  if (dot == std::string::npos) {
    throw std::invalid_argument("notification name \"" + name +
                                "\" has no dot; it needs the form <interface>.<member>");
  }
  SignalName signal{name.substr(0, dot), name.substr(dot + 1)};
  if (!validInterface(signal.interface) || !validElement(signal.member) ||
      signal.member.size() > 255) {
    throw std::invalid_argument("notification name \"" + name +
                                "\" is not a D-Bus <interface>.<member>");
  }
  return signal;
}

}  // namespace

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
