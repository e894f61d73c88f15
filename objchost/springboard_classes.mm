#import "objchost/springboard_classes.h"

#include <string>

#include "objchost/objc_host_log.h"

namespace {

void show(const char* where, id observer, BBBulletin* bulletin, unsigned feed) {
  hushwall::objchost::objcHostLog().shown.push_back({where, observer, bulletin, feed});
}

void showWithReply(const char* where, id observer, BBBulletin* bulletin, unsigned feed, BOOL play,
                   id reply) {
  hushwall::objchost::objcHostLog().shown.push_back(
      {where, observer, bulletin, feed, true, play != NO, reply});
}

}  // namespace

@implementation BBBulletin
@synthesize sectionID, context, message;
@end

@implementation SBBulletinBannerController
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(unsigned)feed {
  show("banner", observer, bulletin, feed);
}
- (void)observer:(id)observer
            addBulletin:(BBBulletin*)bulletin
                forFeed:(unsigned)feed
    playLightsAndSirens:(BOOL)playLightsAndSirens
              withReply:(id)reply {
  showWithReply("banner", observer, bulletin, feed, playLightsAndSirens, reply);
}
@end

@implementation SBLockScreenNotificationListController
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(unsigned)feed {
  show("lockscreen", observer, bulletin, feed);
}
- (void)observer:(id)observer
            addBulletin:(BBBulletin*)bulletin
                forFeed:(unsigned)feed
    playLightsAndSirens:(BOOL)playLightsAndSirens
              withReply:(id)reply {
  showWithReply("lockscreen", observer, bulletin, feed, playLightsAndSirens, reply);
}
@end

@implementation SBBulletinObserverViewController
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(unsigned)feed {
  show("notificationCenter", observer, bulletin, feed);
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

@implementation HWBaseClassText
+ (id)textWithString:(NSString*)string {
  HWBaseClassText* text = [[[HWBaseClassText alloc] init] autorelease];
  text->_characters = [string copy];
  return text;
}
- (void)dealloc {
  [_characters release];
  [super dealloc];
}
- (Class)class {
  return [NSString class];
}
- (NSUInteger)length {
  return [_characters length];
}
- (unichar)characterAtIndex:(NSUInteger)index {
  return [_characters characterAtIndex:index];
}
@end
