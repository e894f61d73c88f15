// What the simulated device does for sounds and the status bar: a process has
// no speaker or screen here, so each effect is kept as state and handed to an
// optional listener (the simulated host prints it, tests look at it).
#ifndef HUSHWALL_PLATFORM_LINUX_PROCESS_SERVICES_H_
#define HUSHWALL_PLATFORM_LINUX_PROCESS_SERVICES_H_

#include <cstdint>
#include <functional>
#include <set>
#include <string>

#include "host/status_bar.h"
#include "host/system_sounds.h"

namespace hushwall::linux_platform {

class ProcessSystemSounds : public host::SystemSounds {
 public:
  void play(std::uint32_t soundId) override;
  int vibrations() const { return vibrations_; }
  std::function<void(std::uint32_t)> onPlay;

 private:
  int vibrations_ = 0;
};

class ProcessStatusBar : public host::StatusBar {
 public:
  void addImageNamed(const host::Text& name) override;
  void removeImageNamed(const host::Text& name) override;
  // Names currently shown, in UTF-8.
  const std::set<std::string>& shown() const { return shown_; }
  // Called with ("add" | "remove", name) for every request, repeated or not.
  std::function<void(const std::string&, const std::string&)> onChange;

 private:
  std::set<std::string> shown_;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_PROCESS_SERVICES_H_
