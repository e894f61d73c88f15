#import "objchost/springboard_classes.h"

#include <string>

#include "objchost/objc_host_log.h"

namespace {

void show(const char* where, NSUInteger feed) {
  auto& log = hushwall::objchost::objcHostLog();
  ++log.shown[where];
  log.feeds.push_back(std::string(where) + " " + std::to_string(feed));
}

}  // namespace

@implementation BBBulletin
@synthesize sectionID, context, message;
@end

@implementation SBBulletinBannerController
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(NSUInteger)feed {
  show("banner", feed);
}
@end

@implementation SBLockScreenNotificationListController
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(NSUInteger)feed {
  show("lockscreen", feed);
}
@end

@implementation SBBulletinObserverViewController
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(NSUInteger)feed {
  show("notificationCenter", feed);
}
@end

@implementation SBApplication
@synthesize bundleIdentifier;
- (id)badgeNumberOrString {
  return _badge;
}
- (void)setBadge:(id)badge {
  [badge retain];
  [_badge release];
  _badge = badge;
}
@end

@implementation SBApplicationController
+ (id)sharedInstance {
  static SBApplicationController* shared = nil;
  if (shared == nil) shared = [[SBApplicationController alloc] init];
  return shared;
}
- (NSArray*)applicationsWithBundleIdentifier:(NSString*)bundleIdentifier {
  NSMutableArray* matching = [NSMutableArray array];
  for (SBApplication* application in _applications) {
    if ([[application bundleIdentifier] isEqual:bundleIdentifier]) [matching addObject:application];
  }
  return matching;
}
- (void)addApplication:(SBApplication*)application {
  if (_applications == nil) _applications = [[NSMutableArray alloc] init];
  [_applications addObject:application];
}
@end
