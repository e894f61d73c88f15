// Telling the user why a change was refused or failed.
#ifndef HUSHWALL_SETTINGS_HW_PROBLEM_ALERT_H_
#define HUSHWALL_SETTINGS_HW_PROBLEM_ALERT_H_

#import <UIKit/UIKit.h>

#include <string>

// Presents an alert with the message and an "OK" button over `controller`.
void HWShowProblem(UIViewController* controller, const std::string& message);

#endif  // HUSHWALL_SETTINGS_HW_PROBLEM_ALERT_H_
