// The part of the private Preferences framework the settings bundle uses.
// The framework ships no headers in the SDK; these are its classes as the
// Settings app has them on every firmware the package supports.
#ifndef HUSHWALL_DEVICE_SETTINGS_PREFERENCES_H_
#define HUSHWALL_DEVICE_SETTINGS_PREFERENCES_H_

#import <UIKit/UIKit.h>

// One row of a settings page, as Root.plist describes it.
@interface PSSpecifier : NSObject {
  // Never read directly here; declared so that a stand-in can implement the
  // property under a runtime whose objects have a fixed layout.
  NSDictionary* _properties;
}
@property(nonatomic, retain) NSDictionary* properties;
@end

// Every page of the Settings app; the bundle's own screens are plain UIKit.
@interface PSViewController : UIViewController
@end

// A settings page: Preferences loads its rows and shows them.
@interface PSListController : PSViewController {
  NSArray* _specifiers;
}
- (NSArray*)specifiers;
- (NSArray*)loadSpecifiersFromPlistName:(NSString*)name target:(id)target;
// The value a row shows, and what a switch hands in when it is flipped.
- (id)readPreferenceValue:(PSSpecifier*)specifier;
- (void)setPreferenceValue:(id)value specifier:(PSSpecifier*)specifier;
@end

#endif  // HUSHWALL_DEVICE_SETTINGS_PREFERENCES_H_
