// Objective-C stand-ins for the SpringBoard classes that Hushwall hooks or
// talks to, named as SpringBoard names them. Each records in objcHostLog()
// what reached it.
#ifndef HUSHWALL_OBJCHOST_SPRINGBOARD_CLASSES_H_
#define HUSHWALL_OBJCHOST_SPRINGBOARD_CLASSES_H_

#import <Foundation/Foundation.h>

@interface BBBulletin : NSObject {
  NSString* sectionID;
  NSDictionary* context;
  NSString* message;
}
@property(nonatomic, retain) NSString* sectionID;
@property(nonatomic, retain) NSDictionary* context;
@property(nonatomic, retain) NSString* message;
@end

// The three controllers SpringBoard hands every new bulletin to.
@interface SBBulletinBannerController : NSObject
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(NSUInteger)feed;
@end
@interface SBLockScreenNotificationListController : NSObject
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(NSUInteger)feed;
@end
@interface SBBulletinObserverViewController : NSObject
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(NSUInteger)feed;
@end

@interface SBApplication : NSObject {
  id _badge;
  NSString* bundleIdentifier;
}
@property(nonatomic, retain) NSString* bundleIdentifier;
- (id)badgeNumberOrString;
- (void)setBadge:(id)badge;
@end

@interface SBApplicationController : NSObject {
  NSMutableArray* _applications;
}
+ (id)sharedInstance;
- (NSArray*)applicationsWithBundleIdentifier:(NSString*)bundleIdentifier;
// Installs an application: the controller knows it from then on.
- (void)addApplication:(SBApplication*)application;
@end

#endif  // HUSHWALL_OBJCHOST_SPRINGBOARD_CLASSES_H_
