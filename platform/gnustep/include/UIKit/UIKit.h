// The UIKit classes the device adapter and the messenger's stand-in use,
// reduced to the selectors they send. Nothing is drawn: the stand-in device
// records what would be on screen (stand_in_device.h) and plays the user's
// taps back.
#ifndef HUSHWALL_GNUSTEP_UIKIT_H_
#define HUSHWALL_GNUSTEP_UIKIT_H_

#import <Foundation/Foundation.h>

@interface UIApplication : NSObject
+ (UIApplication*)sharedApplication;
- (void)addStatusBarImageNamed:(NSString*)name;
- (void)removeStatusBarImageNamed:(NSString*)name;
@end

@class UIAlertView;

@protocol UIAlertViewDelegate <NSObject>
@optional
- (void)alertView:(UIAlertView*)alertView clickedButtonAtIndex:(NSInteger)buttonIndex;
@end

@interface UIAlertView : NSObject {
  NSString* _title;
  NSString* _message;
  id _delegate;
  NSMutableArray* _buttonTitles;
  NSInteger _tag;
  NSInteger _cancelButtonIndex;
}
- (id)initWithTitle:(NSString*)title message:(NSString*)message delegate:(id)delegate
    cancelButtonTitle:(NSString*)cancelButtonTitle otherButtonTitles:(NSString*)otherButtonTitles, ...;
- (NSString*)title;
- (NSString*)message;
- (id)delegate;
- (NSInteger)tag;
- (void)setTag:(NSInteger)tag;
- (NSInteger)numberOfButtons;
- (NSInteger)cancelButtonIndex;
- (NSString*)buttonTitleAtIndex:(NSInteger)index;
- (NSInteger)addButtonWithTitle:(NSString*)title;
- (void)show;
@end

@interface UILabel : NSObject {
  NSString* _text;
}
- (NSString*)text;
- (void)setText:(NSString*)text;
@end

#endif  // HUSHWALL_GNUSTEP_UIKIT_H_
