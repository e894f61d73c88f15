// The "History" screen: what was kept from the user, by number, newest
// first; a row with a picture opens it; swipe to delete; "Clear History"
// after a confirmation. While it is on screen it follows the history's
// change notification.
#ifndef HUSHWALL_SETTINGS_HW_HISTORY_CONTROLLER_H_
#define HUSHWALL_SETTINGS_HW_HISTORY_CONTROLLER_H_

#import <UIKit/UIKit.h>

#include <vector>

#include "companion/history_list.h"

@interface HWHistoryController : UITableViewController {
  std::vector<hushwall::companion::HistorySection>* _sections;
  BOOL _observing;
}
// The "Clear History" button: asks first.
- (void)clearTapped:(id)sender;
// Re-reads the table.
- (void)reload;
@end

// A saved picture, full screen.
@interface HWPictureController : UIViewController {
  NSString* _path;
}
- (id)initWithPath:(NSString*)path;
- (NSString*)path;
@end

#endif  // HUSHWALL_SETTINGS_HW_HISTORY_CONTROLLER_H_
