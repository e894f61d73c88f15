// System sounds; Hushwall only plays the vibration.
#ifndef HUSHWALL_HOST_SYSTEM_SOUNDS_H_
#define HUSHWALL_HOST_SYSTEM_SOUNDS_H_

#include <cstdint>

namespace hushwall::host {

// kSystemSoundID_Vibrate.
inline constexpr std::uint32_t kSystemSoundVibrate = 4095;

class SystemSounds {
 public:
  virtual ~SystemSounds() = default;
  // AudioServicesPlaySystemSound.
  virtual void play(std::uint32_t soundId) = 0;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_SYSTEM_SOUNDS_H_
