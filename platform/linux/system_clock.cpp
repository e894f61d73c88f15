#include "platform/linux/system_clock.h"

#include <chrono>

namespace hushwall::linux_platform {

double SystemClock::now() {
  if (fixed_) return *fixed_;
  using namespace std::chrono;
  return duration<double>(system_clock::now().time_since_epoch()).count();
}

}  // namespace hushwall::linux_platform
