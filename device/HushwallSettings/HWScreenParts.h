// What the settings bundle's screens share: the alerts they ask and tell
// the user with, and what an empty list says.
#ifndef HUSHWALL_SETTINGS_HW_SCREEN_PARTS_H_
#define HUSHWALL_SETTINGS_HW_SCREEN_PARTS_H_

#import <UIKit/UIKit.h>

#include <string>

// Shows an alert with the message and an "OK" button: why a change was
// refused or failed.
void HWShowProblem(const std::string& message);

// Asks for a phone number and a name in one alert ("Cancel", "Add");
// `entered` runs with the two texts once the user has tapped "Add" and the
// alert is gone. `screen`, the one asking, is retained until then: the
// user may have gone back meanwhile.
void HWAskForNumberAndName(UIViewController* screen, NSString* title, NSString* message,
                           void (^entered)(NSString* number, NSString* name));

// Asks before something that cannot be undone ("Cancel", `action`);
// `confirmed` runs once the user has tapped `action` and the alert is gone.
// `screen` is retained until then.
void HWConfirm(UIViewController* screen, NSString* title, NSString* message, NSString* action,
               void (^confirmed)(void));

// The label a table shows behind it while it has no rows.
UILabel* HWEmptyStateLabel(NSString* text);

#endif  // HUSHWALL_SETTINGS_HW_SCREEN_PARTS_H_
