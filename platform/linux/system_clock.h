// The simulated device's clock: the host's real time, unless the device has
// been set to a fixed time (replays set the clock so that runs repeat).
#ifndef HUSHWALL_PLATFORM_LINUX_SYSTEM_CLOCK_H_
#define HUSHWALL_PLATFORM_LINUX_SYSTEM_CLOCK_H_

#include <optional>

#include "host/clock.h"

namespace hushwall::linux_platform {

class SystemClock : public host::Clock {
 public:
  double now() override;
  // Fixes the time the device reports; nullopt returns to real time.
  void setFixedTime(std::optional<double> secondsSince1970) { fixed_ = secondsSince1970; }

 private:
  std::optional<double> fixed_;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_SYSTEM_CLOCK_H_
