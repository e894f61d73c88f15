// The part of the private Preferences framework the settings bundle uses.
// The framework ships no headers in the SDK; these are its classes as the
// Settings app has them on every firmware the package supports.
#ifndef HUSHWALL_DEVICE_SETTINGS_PREFERENCES_H_
#define HUSHWALL_DEVICE_SETTINGS_PREFERENCES_H_

#import <UIKit/UIKit.h>

// One row of a settings page, as Root.plist describes it.
@interface PSSpecifier : NSObject
@property(nonatomic, retain) NSDictionary* properties;
@end

// A settings page: Preferences loads its rows and shows them.
@interface PSListController : UIViewController {
  NSArray* _specifiers;
}
- (NSArray*)specifiers;
- (NSArray*)loadSpecifiersFromPlistName:(NSString*)name target:(id)target;
// The value a row shows, and what a switch hands in when it is flipped.
- (id)readPreferenceValue:(PSSpecifier*)specifier;
- (void)setPreferenceValue:(id)value specifier:(PSSpecifier*)specifier;
@end

#endif  // HUSHWALL_DEVICE_SETTINGS_PREFERENCES_H_
