#include "platform/linux/process_services.h"

namespace hushwall::linux_platform {

void ProcessSystemSounds::play(std::uint32_t soundId) {
  if (soundId == host::kSystemSoundVibrate) ++vibrations_;
  if (onPlay) onPlay(soundId);
}

void ProcessStatusBar::addImageNamed(const host::Text& name) {
  std::string utf8 = host::toUtf8(name);
  shown_.insert(utf8);
  if (onChange) onChange("add", utf8);
}

void ProcessStatusBar::removeImageNamed(const host::Text& name) {
  std::string utf8 = host::toUtf8(name);
  shown_.erase(utf8);
  if (onChange) onChange("remove", utf8);
}

}  // namespace hushwall::linux_platform
