// The Preferences framework's list controller, as far as the settings
// bundle's own declarations (device/HushwallSettings/Preferences) go. It
// loads no specifiers: tests read Root.plist themselves and send the
// actions it names. Apart from the other stand-ins because only the
// settings bundle's tests link it.
#import <Preferences/PSListController.h>

@implementation PSViewController
@end

@implementation PSListController
- (NSArray*)specifiers { return _specifiers; }
- (NSArray*)loadSpecifiersFromPlistName:(NSString*)name target:(id)target {
  return [NSArray array];
}
- (void)dealloc {
  [_specifiers release];
  [super dealloc];
}
@end
