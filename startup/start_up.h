// The start-up routine, run once per process when the library is loaded.
#ifndef HUSHWALL_STARTUP_START_UP_H_
#define HUSHWALL_STARTUP_START_UP_H_

namespace hushwall {

inline constexpr char kWhatsAppBundleIdentifier[] = "net.whatsapp.WhatsApp";
inline constexpr char kSpringBoardBundleIdentifier[] = "com.apple.springboard";

// Adds the observers, installs the hook group that fits the process (none in
// any other process), seeds the database in SpringBoard, and loads the
// settings and the blacklist before any hook can run. Never undone.
void HushwallStartUp();

}  // namespace hushwall

#endif  // HUSHWALL_STARTUP_START_UP_H_
