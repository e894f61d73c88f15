// The main switches page's links to the "Blacklist" and "History" screens:
// the actions that Root.plist names, pushing a plain UIKit table view.
//
// Root.plist's two entries are PSButtonCell rows, not PSLinkCell: a tap on a
// button row performs the row's `action` on the page (with the row's
// specifier), which is the documented use of `action` (iphonedevwiki,
// "Preferences specifier plist"). A link row's documented tap is pushing its
// `detail` class, which Preferences of iOS 7 and 8 creates as a
// PSViewController (initForContentSize:, viewWillBecomeVisible:); whether
// those firmwares perform a link row's `action` instead, when it names no
// `detail`, no documentation says, and these screens are plain UIKit
// controllers.
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
