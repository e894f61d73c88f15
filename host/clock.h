// The current time ([NSDate date]).
#ifndef HUSHWALL_HOST_CLOCK_H_
#define HUSHWALL_HOST_CLOCK_H_

namespace hushwall::host {

class Clock {
 public:
  virtual ~Clock() = default;
  // Seconds since 1970-01-01 00:00 UTC.
  virtual double now() = 0;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_CLOCK_H_
