// The stand-in device's state inside one process, shared by the shim
// functions and classes of this folder.
#ifndef HUSHWALL_PLATFORM_GNUSTEP_STAND_IN_STATE_H_
#define HUSHWALL_PLATFORM_GNUSTEP_STAND_IN_STATE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/gnustep/stand_in_device.h"

#ifdef __OBJC__
@class UIAlertView;
#else
typedef struct objc_object UIAlertView;
#endif

namespace hushwall::linux_platform {
class DBusNotifyCenter;
}

namespace hushwall::gnustep {

struct StandInState {
  std::unique_ptr<linux_platform::DBusNotifyCenter> carrier;
  std::vector<std::uint32_t> sounds;
  std::vector<std::string> statusBar;
  std::vector<ShownAlert> alerts;
  UIAlertView* onScreen = nullptr;  // retained while shown
};

StandInState& standInState();

}  // namespace hushwall::gnustep

#endif  // HUSHWALL_PLATFORM_GNUSTEP_STAND_IN_STATE_H_
