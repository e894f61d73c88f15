// What the settings bundle's screens present, for tests to look at and
// answer as the user would (Objective-C++ only).
#ifndef HUSHWALL_PLATFORM_GNUSTEP_STAND_IN_SCREENS_H_
#define HUSHWALL_PLATFORM_GNUSTEP_STAND_IN_SCREENS_H_

#import <UIKit/UIKit.h>

namespace hushwall::gnustep {

// The controller presented last with presentViewController:animated:
// completion: and not yet dismissed; nil when none is.
UIViewController* presentedController();

// The user taps the action titled `title` on the presented alert
// controller: the alert goes away, then the action's handler runs. Throws
// std::logic_error when no alert controller is presented or it has no such
// action.
void tapAlertAction(NSString* title);

}  // namespace hushwall::gnustep

#endif  // HUSHWALL_PLATFORM_GNUSTEP_STAND_IN_SCREENS_H_
