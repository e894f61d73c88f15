// The Preferences framework's list controller, as far as the settings
// bundle's own declarations (device/HushwallSettings/preferences.h) go. It
// loads no specifiers: tests read Root.plist themselves and send the
// actions it names. Apart from the other stand-ins because only the
// settings bundle's tests link it.
#import "preferences.h"

@implementation PSSpecifier
@synthesize properties = _properties;
- (void)dealloc {
  [_properties release];
  [super dealloc];
}
@end

@implementation PSViewController
@end

@implementation PSListController
- (NSArray*)specifiers { return _specifiers; }
- (NSArray*)loadSpecifiersFromPlistName:(NSString*)name target:(id)target {
  return [NSArray array];
}
// Preferences keeps a row's value in the app's own defaults; the bundle's
// controller replaces both, as it does on the phone.
- (id)readPreferenceValue:(PSSpecifier*)specifier { return nil; }
- (void)setPreferenceValue:(id)value specifier:(PSSpecifier*)specifier {}
- (void)dealloc {
  [_specifiers release];
  [super dealloc];
}
@end
