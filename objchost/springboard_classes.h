// Objective-C stand-ins for the SpringBoard classes that Hushwall hooks or
// talks to, named as SpringBoard names them. Each records in objcHostLog()
// what reached it.
//
// The classes themselves hold only their state and what the tests use to
// set a scene (setters, addApplication:). Their firmware methods, declared
// in the Firmware categories below for the callers' sake, are registered at
// start by installSpringBoardFirmware (springboard_firmware.h): a class
// answers only those that the chosen firmware generation has, with that
// generation's types.
#ifndef HUSHWALL_OBJCHOST_SPRINGBOARD_CLASSES_H_
#define HUSHWALL_OBJCHOST_SPRINGBOARD_CLASSES_H_

#import <Foundation/Foundation.h>

#include <cstdint>

#include "objchost/springboard_firmware.h"

@interface BBBulletin : NSObject {
 @public
  NSString* _sectionID;
  NSDictionary* _context;
  NSString* _message;
}
- (void)setSectionID:(NSString*)sectionID;
- (void)setContext:(NSDictionary*)context;
- (void)setMessage:(NSString*)message;
@end
@interface BBBulletin (Firmware)
- (NSString*)sectionID;
- (NSDictionary*)context;
- (NSString*)message;
@end

// The three controllers SpringBoard hands every new bulletin to, through
// the observer protocol's method. Its feed is an NSUInteger, 64 bits on
// arm64. The longer method adds whether to play sounds and a reply block.
@interface SBBulletinBannerController : NSObject
@end
@interface SBLockScreenNotificationListController : NSObject
@end
@interface SBBulletinObserverViewController : NSObject
@end
@interface NSObject (BulletinObserverFirmware)
- (void)observer:(id)observer addBulletin:(BBBulletin*)bulletin forFeed:(NSUInteger)feed;
- (void)observer:(id)observer
            addBulletin:(BBBulletin*)bulletin
                forFeed:(NSUInteger)feed
    playLightsAndSirens:(bool)playLightsAndSirens
              withReply:(id)reply;
@end

@interface SBApplication : NSObject {
 @public
  id _badge;
  NSString* _bundleIdentifier;
}
- (void)setBundleIdentifier:(NSString*)bundleIdentifier;
@end
@interface SBApplication (Firmware)
- (NSString*)bundleIdentifier;
- (id)badgeNumberOrString;
- (void)setBadge:(id)badge;
@end

@interface SBApplicationController : NSObject {
 @public
  NSMutableArray* _applications;
}
// On every generation.
+ (id)sharedInstance;
// Installs an application: the controller knows it from then on.
+ (void)addApplication:(SBApplication*)application;
@end
@interface SBApplicationController (Firmware)
// iOS 7.
- (NSArray*)applicationsWithBundleIdentifier:(NSString*)bundleIdentifier;
// iOS 8.
- (SBApplication*)applicationWithBundleIdentifier:(NSString*)bundleIdentifier;
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

namespace hushwall::objchost {

// The feed SpringBoard hands with every bulletin here: above 2^31, so that an
// argument passed with the wrong width or sign arrives as another number.
inline constexpr std::uint32_t kFeed = 0xFEEDFACEu;

// Hands a bulletin, with kFeed, to a controller through whichever of the
// observer methods its firmware has (the longer one with sounds on and
// `reply`); true for the longer one.
bool deliverTo(id controller, id observer, BBBulletin* bulletin, id reply);

}  // namespace hushwall::objchost

#endif  // HUSHWALL_OBJCHOST_SPRINGBOARD_CLASSES_H_
