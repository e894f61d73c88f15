// The settings screen: the switches of Resources/Root.plist. Each switch is
// written into the settings file here, not by Preferences: on iOS 8 the
// Settings app stores switches through cfprefsd, which may not have
// written the file yet when the change notification arrives, and the
// library reads the file itself. So the file is written first, and the
// switch's notification posted after.
#include <CoreFoundation/CoreFoundation.h>

#import "preferences.h"
#import "settings_file.h"

@interface HushwallSettingsListController : PSListController
@end

@implementation HushwallSettingsListController

- (NSArray*)specifiers {
  if (_specifiers == nil) {
    _specifiers = [[self loadSpecifiersFromPlistName:@"Root" target:self] retain];
  }
  return _specifiers;
}

- (id)readPreferenceValue:(PSSpecifier*)specifier {
  NSDictionary* properties = [specifier properties];
  id value = [HWReadSettings(HWSettingsFilePath) objectForKey:[properties objectForKey:@"key"]];
  // Until first touched, the switch shows the library's own default.
  return value != nil ? value : [properties objectForKey:@"default"];
}

- (void)setPreferenceValue:(id)value specifier:(PSSpecifier*)specifier {
  NSDictionary* properties = [specifier properties];
  if (!HWWriteSetting(HWSettingsFilePath, [properties objectForKey:@"key"], value)) return;
  NSString* notification = [properties objectForKey:@"PostNotification"];
  if (notification != nil) {
    CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(),
                                         (CFStringRef)notification, NULL, NULL, true);
  }
}

@end
