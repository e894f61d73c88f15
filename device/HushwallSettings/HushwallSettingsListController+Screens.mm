// The main switches page's links to the "Blacklist" and "History" screens:
// the actions that Root.plist names, pushing a plain UIKit table view.
#import "preferences.h"

#include "HWBlacklistController.h"
#include "HWHistoryController.h"

@interface HushwallSettingsListController : PSListController
@end

@interface HushwallSettingsListController (Screens)
- (void)showBlacklist:(PSSpecifier*)specifier;
- (void)showHistory:(PSSpecifier*)specifier;
@end

@implementation HushwallSettingsListController (Screens)

- (void)showBlacklist:(PSSpecifier*)specifier {
  HWBlacklistController* screen = [[[HWBlacklistController alloc] init] autorelease];
  [[self navigationController] pushViewController:screen animated:YES];
}

- (void)showHistory:(PSSpecifier*)specifier {
  HWHistoryController* screen = [[[HWHistoryController alloc] init] autorelease];
  [[self navigationController] pushViewController:screen animated:YES];
}

@end
