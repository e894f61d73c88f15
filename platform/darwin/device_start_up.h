// The device's start-up: the platform installed as the Env, then the
// library's start-up routine. Called once, by the load-time initialiser.
#ifndef HUSHWALL_PLATFORM_DARWIN_DEVICE_START_UP_H_
#define HUSHWALL_PLATFORM_DARWIN_DEVICE_START_UP_H_

namespace hushwall::darwin {

void startUpOnDevice();

}  // namespace hushwall::darwin

#endif  // HUSHWALL_PLATFORM_DARWIN_DEVICE_START_UP_H_
