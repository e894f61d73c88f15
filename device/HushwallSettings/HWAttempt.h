// Carrying out a change of the companion's logic from a screen.
#ifndef HUSHWALL_SETTINGS_HW_ATTEMPT_H_
#define HUSHWALL_SETTINGS_HW_ATTEMPT_H_

#include <functional>
#include <optional>
#include <string>

// Runs `change` and returns why it failed, for the user; nothing when it
// worked. The catch is here, in plain C++: an Objective-C++ method's
// exception personality does not catch C++ exceptions under every
// Objective-C runtime (GNUstep's does not). The tweak's
// darwin::calledWithCatchAll stands on the same fact, but only says whether
// anything was thrown; a screen needs the message to show.
std::optional<std::string> HWAttempt(const std::function<void()>& change);

#endif  // HUSHWALL_SETTINGS_HW_ATTEMPT_H_
