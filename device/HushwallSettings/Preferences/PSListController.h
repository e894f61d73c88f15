// The few classes of the private Preferences framework that the settings
// bundle uses. No SDK ships their headers, so they are declared here with
// just what the bundle sends them; the framework itself provides them at
// run time.
#ifndef HUSHWALL_SETTINGS_PREFERENCES_PS_LIST_CONTROLLER_H_
#define HUSHWALL_SETTINGS_PREFERENCES_PS_LIST_CONTROLLER_H_

#import <UIKit/UIKit.h>

@class PSSpecifier;

@interface PSViewController : UIViewController
@end

// A settings page made of the specifiers of a property list (Root.plist).
@interface PSListController : PSViewController {
  NSArray* _specifiers;
}
- (NSArray*)specifiers;
- (NSArray*)loadSpecifiersFromPlistName:(NSString*)name target:(id)target;
@end

#endif  // HUSHWALL_SETTINGS_PREFERENCES_PS_LIST_CONTROLLER_H_
