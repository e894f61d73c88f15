// Alerts on the simulated device: shown alerts are kept in order, and the
// user's tap is played back with answer().
#ifndef HUSHWALL_PLATFORM_LINUX_PROCESS_ALERTS_H_
#define HUSHWALL_PLATFORM_LINUX_PROCESS_ALERTS_H_

#include <functional>
#include <vector>

#include "host/alerts.h"

namespace hushwall::linux_platform {

class ProcessAlerts : public host::Alerts {
 public:
  void show(const host::AlertView& alert, Delegate delegate) override;

  // Every alert shown, in order.
  const std::vector<host::AlertView>& shown() const { return shown_; }
  // Taps button `index` on the alert on screen (the last one shown) and tells
  // its delegate. Throws std::logic_error when no alert is on screen or the
  // index is not one of its buttons.
  void answer(std::intptr_t index);
  bool onScreen() const { return static_cast<bool>(pending_); }
  std::function<void(const host::AlertView&)> onShow;

 private:
  std::vector<host::AlertView> shown_;
  Delegate pending_;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_PROCESS_ALERTS_H_
