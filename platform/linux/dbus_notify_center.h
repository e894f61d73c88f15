// The notify center over D-Bus: each notification name is one signal on the
// device's bus, with the name's last word as the member and the rest as the
// interface ("com.Corvanta.HushwallSettings.settingsChanged" is member
// "settingsChanged" of interface "com.Corvanta.HushwallSettings"), sent from
// path "/" without arguments. Anything else on the bus can post or hear them
// too, e.g. `dbus-send --bus=ADDRESS --type=signal / NAME`.
#ifndef HUSHWALL_PLATFORM_LINUX_DBUS_NOTIFY_CENTER_H_
#define HUSHWALL_PLATFORM_LINUX_DBUS_NOTIFY_CENTER_H_

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <sdbus-c++/IConnection.h>

#include "host/notify_center.h"
#include "platform/linux/device_bus_address.h"

namespace sdbus {
class IObject;
class IProxy;
}

namespace hushwall::linux_platform {

// Throws std::invalid_argument, as post() and addObserver() do, for a name
// that is not "<interface>.<member>"; lets a program refuse a name before it
// connects.
void checkNotificationName(const std::string& name);

class DBusNotifyCenter : public host::NotifyCenter {
 public:
  // Connects to the bus at `busAddress` ("unix:path=..."); throws
  // sdbus::Error when nothing listens there.
  explicit DBusNotifyCenter(const std::string& busAddress);
  ~DBusNotifyCenter() override;
  DBusNotifyCenter(const DBusNotifyCenter&) = delete;
  DBusNotifyCenter& operator=(const DBusNotifyCenter&) = delete;

  // Both throw std::invalid_argument for a name that is not
  // "<interface>.<member>" in D-Bus terms (e.g. one without a dot).
  // post() never waits for observers, and the signal has left the process
  // when it returns: only if the socket is full does it wait for the bus
  // daemon to take the rest.
  void post(const std::string& name) override;
  // Every behaviour is kept as given, and all act as kHold: the bus queues
  // what arrives while the process is not running its loop, and the next
  // processPending() delivers it. Callbacks must not throw.
  void addObserver(const std::string& name, Callback callback,
                   host::SuspensionBehavior behavior) override;

  struct Observation {
    std::string name;
    host::SuspensionBehavior behavior;
  };
  const std::vector<Observation>& observations() const { return observations_; }

  // The host's main loop drives delivery; nothing runs behind its back.
  // Call processPending(), then wait for pollData().events on
  // pollData().fd, no longer than its timeout (zero while received messages
  // wait in the connection), and repeat. eventFd() is that fd.
  sdbus::IConnection::PollData pollData() const;
  int eventFd() const { return pollData().fd; }
  // Runs the callbacks of everything already received, without blocking;
  // true when at least one callback ran.
  bool processPending();
  // Loops for `duration`, delivering as notifications arrive.
  void runFor(std::chrono::milliseconds duration);
  // Loops until `done()` holds (checked after each delivery round) or
  // `timeout` passes; returns done().
  bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);

  // Waits until the bus daemon has routed everything this process sent so
  // far, and until everything the daemon routed to this process before now
  // is in this process: a method call to the daemon itself, which reads one
  // connection's messages in order and answers through the same queue that
  // carries the signals for this process. Whatever arrives meanwhile is
  // delivered by the next processPending(), never here. A simulator that
  // wants replays to repeat uses it to know that a step's notifications have
  // all landed. Throws sdbus::Error when the bus is gone.
  void roundTripToBus();
  // This process's name on the bus (":1.7"), the sender of its posts.
  std::string uniqueName() const;

 private:
  std::unique_ptr<sdbus::IConnection> connection_;
  std::unique_ptr<sdbus::IObject> root_;  // path "/", where posts come from
  std::unique_ptr<sdbus::IProxy> busDaemon_;
  std::vector<Observation> observations_;
  std::uint64_t deliveries_ = 0;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_DBUS_NOTIFY_CENTER_H_
