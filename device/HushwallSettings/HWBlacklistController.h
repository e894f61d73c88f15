// The "Blacklist" screen: the blacklisted numbers with their names, "+" to
// add one, swipe to delete.
#ifndef HUSHWALL_SETTINGS_HW_BLACKLIST_CONTROLLER_H_
#define HUSHWALL_SETTINGS_HW_BLACKLIST_CONTROLLER_H_

#import <UIKit/UIKit.h>

#include <vector>

#include "companion/blacklist_editor.h"

@interface HWBlacklistController : UITableViewController {
  std::vector<hushwall::companion::BlacklistEntry>* _entries;
}
// The "+" button: asks for a number and a name.
- (void)addTapped:(id)sender;
// What the alert's "Add" does; refusals are shown, nothing is written.
- (void)addNumber:(NSString*)number name:(NSString*)name;
// Re-reads the table.
- (void)reload;
@end

#endif  // HUSHWALL_SETTINGS_HW_BLACKLIST_CONTROLLER_H_
