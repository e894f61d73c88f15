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

// The three controllers SpringBoard hands every new bulletin to. The feed
// is an unsigned 32-bit integer, as in SpringBoard ("v@:@@I"). From iOS 8.2
// the banner and the lock screen receive it through a longer method, with
// whether to play sounds and a reply block after the feed.
@interface SBBulletinBannerController : NSObject
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(unsigned)feed;
- (void)observer:(id)observer
            addBulletin:(BBBulletin*)bulletin
                forFeed:(unsigned)feed
    playLightsAndSirens:(BOOL)playLightsAndSirens
              withReply:(id)reply;
@end
@interface SBLockScreenNotificationListController : NSObject
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(unsigned)feed;
- (void)observer:(id)observer
            addBulletin:(BBBulletin*)bulletin
                forFeed:(unsigned)feed
    playLightsAndSirens:(BOOL)playLightsAndSirens
              withReply:(id)reply;
@end
@interface SBBulletinObserverViewController : NSObject
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(unsigned)feed;
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

// A text whose class answers as NSString itself. The concrete strings of
// GNUstep, like those of the phone's Foundation, are of private subclasses;
// a badge of the base class is treated apart by the badge rule, so the
// tests need one.
@interface HWBaseClassText : NSString {
  NSString* _characters;
}
+ (id)textWithString:(NSString*)string;
@end

#endif  // HUSHWALL_OBJCHOST_SPRINGBOARD_CLASSES_H_
