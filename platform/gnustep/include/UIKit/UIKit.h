// The UIKit classes the device adapter, the messenger's stand-in and the
// settings bundle's screens use, reduced to the selectors they send. Nothing
// is drawn: the stand-in device records what would be on screen
// (stand_in_device.h) and plays the user's taps back.
#ifndef HUSHWALL_GNUSTEP_UIKIT_H_
#define HUSHWALL_GNUSTEP_UIKIT_H_

#import <Foundation/Foundation.h>

@interface UIApplication : NSObject
+ (UIApplication*)sharedApplication;
- (void)addStatusBarImageNamed:(NSString*)name;
- (void)removeStatusBarImageNamed:(NSString*)name;
@end

@class UIAlertView;
@class UITextField;

// As UIKit sends them when the user taps a button: clicked, then dismissed.
@protocol UIAlertViewDelegate <NSObject>
@optional
- (void)alertView:(UIAlertView*)alertView clickedButtonAtIndex:(NSInteger)buttonIndex;
- (void)alertView:(UIAlertView*)alertView didDismissWithButtonIndex:(NSInteger)buttonIndex;
@end

typedef NS_ENUM(NSInteger, UIAlertViewStyle) {
  UIAlertViewStyleDefault = 0,
  UIAlertViewStyleSecureTextInput = 1,
  UIAlertViewStylePlainTextInput = 2,
  UIAlertViewStyleLoginAndPasswordInput = 3,
};

@interface UIAlertView : NSObject {
  NSString* _title;
  NSString* _message;
  id _delegate;
  NSMutableArray* _buttonTitles;
  NSInteger _tag;
  NSInteger _cancelButtonIndex;
  UIAlertViewStyle _alertViewStyle;
  NSMutableArray* _textFields;
}
- (id)initWithTitle:(NSString*)title message:(NSString*)message delegate:(id)delegate
    cancelButtonTitle:(NSString*)cancelButtonTitle otherButtonTitles:(NSString*)otherButtonTitles, ...;
- (NSString*)title;
- (NSString*)message;
- (id)delegate;
- (void)setDelegate:(id)delegate;
- (NSInteger)tag;
- (void)setTag:(NSInteger)tag;
- (NSInteger)numberOfButtons;
- (NSInteger)cancelButtonIndex;
- (NSString*)buttonTitleAtIndex:(NSInteger)index;
- (NSInteger)addButtonWithTitle:(NSString*)title;
// The style's fields: none, one, or two (the second a password field), as
// UIKit makes them; textFieldAtIndex: raises NSRangeException beyond them.
- (UIAlertViewStyle)alertViewStyle;
- (void)setAlertViewStyle:(UIAlertViewStyle)style;
- (UITextField*)textFieldAtIndex:(NSInteger)index;
- (void)show;
@end

typedef NS_ENUM(NSInteger, UIViewContentMode) {
  UIViewContentModeScaleToFill = 0,
  UIViewContentModeScaleAspectFit = 1,
};

@interface UIView : NSObject {
  UIViewContentMode _contentMode;
}
- (UIViewContentMode)contentMode;
- (void)setContentMode:(UIViewContentMode)mode;
@end

@interface UILabel : UIView {
  NSString* _text;
}
- (NSString*)text;
- (void)setText:(NSString*)text;
@end

// --- Table screens and what they present -------------------------------

@interface NSIndexPath (UIKitTableRows)
+ (NSIndexPath*)indexPathForRow:(NSInteger)row inSection:(NSInteger)section;
- (NSInteger)row;
- (NSInteger)section;
@end

@interface UIImage : NSObject {
  NSData* _data;
}
+ (UIImage*)imageWithContentsOfFile:(NSString*)path;  // nil when unreadable
@end

@interface UIImageView : UIView {
  UIImage* _image;
}
- (id)initWithImage:(UIImage*)image;
- (UIImage*)image;
@end

typedef NS_ENUM(NSInteger, UIBarButtonSystemItem) {
  UIBarButtonSystemItemDone = 0,
  UIBarButtonSystemItemAdd = 4,
  UIBarButtonSystemItemTrash = 16,
};
typedef NS_ENUM(NSInteger, UIBarButtonItemStyle) { UIBarButtonItemStylePlain = 0 };

@interface UIBarButtonItem : NSObject {
  NSString* _title;
  id _target;
  SEL _action;
  BOOL _enabled;
}
- (id)initWithBarButtonSystemItem:(UIBarButtonSystemItem)item target:(id)target action:(SEL)action;
- (id)initWithTitle:(NSString*)title style:(UIBarButtonItemStyle)style target:(id)target
             action:(SEL)action;
- (NSString*)title;
- (id)target;
- (SEL)action;
- (BOOL)isEnabled;
- (void)setEnabled:(BOOL)enabled;
@end

@interface UINavigationItem : NSObject {
  UIBarButtonItem* _rightBarButtonItem;
}
- (UIBarButtonItem*)rightBarButtonItem;
- (void)setRightBarButtonItem:(UIBarButtonItem*)item;
@end

@class UINavigationController;

@interface UIViewController : NSObject {
  NSString* _title;
  UINavigationItem* _navigationItem;
  UIView* _view;
  UINavigationController* _navigationController;  // not retained
}
- (NSString*)title;
- (void)setTitle:(NSString*)title;
- (UINavigationItem*)navigationItem;
- (UIView*)view;
- (void)setView:(UIView*)view;
- (void)loadView;
- (void)viewDidLoad;
- (void)viewWillAppear:(BOOL)animated;
- (void)viewDidDisappear:(BOOL)animated;
- (UINavigationController*)navigationController;
@end

// A stack of screens; pushing loads the screen and makes it appear.
@interface UINavigationController : UIViewController {
  NSMutableArray* _viewControllers;
}
- (id)initWithRootViewController:(UIViewController*)root;
- (void)pushViewController:(UIViewController*)controller animated:(BOOL)animated;
- (UIViewController*)popViewControllerAnimated:(BOOL)animated;
- (NSArray*)viewControllers;
- (UIViewController*)topViewController;
@end

typedef NS_ENUM(NSInteger, UITableViewStyle) { UITableViewStylePlain = 0, UITableViewStyleGrouped = 1 };
typedef NS_ENUM(NSInteger, UITableViewCellStyle) {
  UITableViewCellStyleDefault = 0,
  UITableViewCellStyleValue1 = 1,
  UITableViewCellStyleValue2 = 2,
  UITableViewCellStyleSubtitle = 3,
};
typedef NS_ENUM(NSInteger, UITableViewCellEditingStyle) {
  UITableViewCellEditingStyleNone = 0,
  UITableViewCellEditingStyleDelete = 1,
};
typedef NS_ENUM(NSInteger, UITableViewCellAccessoryType) {
  UITableViewCellAccessoryNone = 0,
  UITableViewCellAccessoryDisclosureIndicator = 1,
};
typedef NS_ENUM(NSInteger, UITableViewCellSelectionStyle) {
  UITableViewCellSelectionStyleNone = 0,
  UITableViewCellSelectionStyleDefault = 3,
};

@interface UITableViewCell : UIView {
  UILabel* _textLabel;
  UILabel* _detailTextLabel;
  NSString* _reuseIdentifier;
  UITableViewCellAccessoryType _accessoryType;
  UITableViewCellSelectionStyle _selectionStyle;
}
- (id)initWithStyle:(UITableViewCellStyle)style reuseIdentifier:(NSString*)identifier;
- (UILabel*)textLabel;
- (UILabel*)detailTextLabel;
- (UITableViewCellAccessoryType)accessoryType;
- (void)setAccessoryType:(UITableViewCellAccessoryType)type;
- (UITableViewCellSelectionStyle)selectionStyle;
- (void)setSelectionStyle:(UITableViewCellSelectionStyle)style;
@end

@class UITableView;

@protocol UITableViewDataSource <NSObject>
- (NSInteger)tableView:(UITableView*)tableView numberOfRowsInSection:(NSInteger)section;
- (UITableViewCell*)tableView:(UITableView*)tableView cellForRowAtIndexPath:(NSIndexPath*)indexPath;
@optional
- (NSInteger)numberOfSectionsInTableView:(UITableView*)tableView;
- (NSString*)tableView:(UITableView*)tableView titleForHeaderInSection:(NSInteger)section;
- (void)tableView:(UITableView*)tableView
    commitEditingStyle:(UITableViewCellEditingStyle)style
     forRowAtIndexPath:(NSIndexPath*)indexPath;
@end

@protocol UITableViewDelegate <NSObject>
@optional
- (void)tableView:(UITableView*)tableView didSelectRowAtIndexPath:(NSIndexPath*)indexPath;
@end

// Rows are asked of the data source as they are shown; reloadData counts
// its reloads so that a test can tell the list was redrawn.
@interface UITableView : UIView {
  id _dataSource;  // not retained
  id _delegate;    // not retained
  UIView* _backgroundView;
  NSInteger _reloads;
}
- (id)dataSource;
- (void)setDataSource:(id)dataSource;
- (id)delegate;
- (void)setDelegate:(id)delegate;
- (UIView*)backgroundView;
- (void)setBackgroundView:(UIView*)view;
- (void)reloadData;
- (NSInteger)reloadCount;
- (UITableViewCell*)dequeueReusableCellWithIdentifier:(NSString*)identifier;  // always nil
- (void)deselectRowAtIndexPath:(NSIndexPath*)indexPath animated:(BOOL)animated;
@end

@interface UITableViewController : UIViewController <UITableViewDataSource, UITableViewDelegate> {
  UITableView* _tableView;
}
- (id)initWithStyle:(UITableViewStyle)style;
- (UITableView*)tableView;
@end

typedef NS_ENUM(NSInteger, UIKeyboardType) { UIKeyboardTypeDefault = 0, UIKeyboardTypePhonePad = 5 };

@interface UITextField : UIView {
  NSString* _text;
  NSString* _placeholder;
  UIKeyboardType _keyboardType;
  BOOL _secureTextEntry;
}
- (NSString*)text;
- (void)setText:(NSString*)text;
- (NSString*)placeholder;
- (void)setPlaceholder:(NSString*)placeholder;
- (UIKeyboardType)keyboardType;
- (void)setKeyboardType:(UIKeyboardType)type;
- (BOOL)isSecureTextEntry;
- (void)setSecureTextEntry:(BOOL)secure;
@end

#endif  // HUSHWALL_GNUSTEP_UIKIT_H_
