// The Darwin observers that show and hide the status-bar icon in
// SpringBoard. The messenger cannot touch SpringBoard's status bar, so it
// asks by notification; the remove notification comes from outside the
// library. Neither observer checks settings_ShowStatusBarIcon: whoever posts
// has already decided, and the library keeps no record of the icon's state.
#include "model/hushwall.h"
#include "springboard/hooks.h"

namespace hushwall {

void addStatusBarIconNotif() { Hushwall::sharedInstance()->addStatusBarIcon(); }

void removeStatusBarIconNotif() { Hushwall::sharedInstance()->removeStatusBarIcon(); }

}  // namespace hushwall
