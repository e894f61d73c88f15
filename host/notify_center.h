// The system-wide notify center: named signals that carry nothing but their
// name, seen by every process that observes the name (the posting process
// included).
#ifndef HUSHWALL_HOST_NOTIFY_CENTER_H_
#define HUSHWALL_HOST_NOTIFY_CENTER_H_

#include <functional>
#include <string>

namespace hushwall::host {

// How a notification is treated while the observing process is suspended.
// Hushwall only ever asks for kHold (deliver once the process runs again).
enum class SuspensionBehavior { kDrop = 1, kCoalesce = 2, kHold = 3, kDeliverImmediately = 4 };

class NotifyCenter {
 public:
  // Observer callbacks take nothing: a notification has no payload.
  using Callback = std::function<void()>;

  virtual ~NotifyCenter() = default;

  // Posts `name` with no object and no user information, delivered
  // immediately; never waits for observers.
  virtual void post(const std::string& name) = 0;

  // Adds an observer for `name`. Callbacks run on the process's main loop,
  // never on a thread of the center's own. Observers are never removed.
  virtual void addObserver(const std::string& name, Callback callback,
                           SuspensionBehavior behavior) = 0;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_NOTIFY_CENTER_H_
