// The settings screen: the switches of Resources/Root.plist. Preferences
// itself writes each switch into the settings file and posts the change
// notification the switch names; nothing else happens here.
#import "preferences.h"

@interface HushwallSettingsListController : PSListController
@end

@implementation HushwallSettingsListController

- (NSArray*)specifiers {
  if (_specifiers == nil) {
    _specifiers = [[self loadSpecifiersFromPlistName:@"Root" target:self] retain];
  }
  return _specifiers;
}

@end
