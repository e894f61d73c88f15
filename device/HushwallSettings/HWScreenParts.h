// What the settings bundle's screens share: telling the user why a change
// was refused or failed, and what an empty list says.
#ifndef HUSHWALL_SETTINGS_HW_SCREEN_PARTS_H_
#define HUSHWALL_SETTINGS_HW_SCREEN_PARTS_H_

#import <UIKit/UIKit.h>

#include <string>

// Presents an alert with the message and an "OK" button over `controller`.
void HWShowProblem(UIViewController* controller, const std::string& message);

// The label a table shows behind it while it has no rows.
UILabel* HWEmptyStateLabel(NSString* text);

#endif  // HUSHWALL_SETTINGS_HW_SCREEN_PARTS_H_
