// UIApplication's status-bar images, UIAlertView and UILabel, as far as the
// tweak, the messenger's stand-in and the settings bundle use them. Nothing is drawn: what would
// be on screen is recorded in the stand-in state, and the user's tap on an
// alert is played back with tapAlertButton().
#import <UIKit/UIKit.h>

#include <stdarg.h>

#include <stdexcept>
#include <string>

#include "platform/gnustep/stand_in_state.h"

namespace {

std::string utf8(NSString* string) { return string == nil ? std::string() : [string UTF8String]; }

// How many text fields an alert of the style has.
int fieldCount(UIAlertViewStyle style) {
  if (style == UIAlertViewStyleDefault) return 0;
  return style == UIAlertViewStyleLoginAndPasswordInput ? 2 : 1;
}

}  // namespace

@implementation UIApplication
+ (UIApplication*)sharedApplication {
  static UIApplication* shared = nil;
  if (shared == nil) shared = [[UIApplication alloc] init];
  return shared;
}
- (void)addStatusBarImageNamed:(NSString*)name {
  hushwall::gnustep::standInState().statusBar.push_back("add " + utf8(name));
}
- (void)removeStatusBarImageNamed:(NSString*)name {
  hushwall::gnustep::standInState().statusBar.push_back("remove " + utf8(name));
}
@end

@implementation UIAlertView
- (id)initWithTitle:(NSString*)title message:(NSString*)message delegate:(id)delegate
    cancelButtonTitle:(NSString*)cancelButtonTitle otherButtonTitles:(NSString*)otherButtonTitles, ... {
  if ((self = [super init]) != nil) {
    _title = [title copy];
    _message = [message copy];
    _delegate = delegate;  // not retained, as on the device
    _buttonTitles = [[NSMutableArray alloc] init];
    _cancelButtonIndex = -1;
    if (cancelButtonTitle != nil) {
      _cancelButtonIndex = 0;
      [_buttonTitles addObject:cancelButtonTitle];
    }
    va_list more;
    va_start(more, otherButtonTitles);
    for (NSString* other = otherButtonTitles; other != nil; other = va_arg(more, NSString*)) {
      [_buttonTitles addObject:other];
    }
    va_end(more);
  }
  return self;
}
- (void)dealloc {
  [_title release];
  [_message release];
  [_buttonTitles release];
  [_textFields release];
  [super dealloc];
}
- (NSString*)title { return _title; }
- (NSString*)message { return _message; }
- (id)delegate { return _delegate; }
- (void)setDelegate:(id)delegate { _delegate = delegate; }
- (NSInteger)tag { return _tag; }
- (void)setTag:(NSInteger)tag { _tag = tag; }
- (NSInteger)numberOfButtons { return (NSInteger)[_buttonTitles count]; }
- (NSInteger)cancelButtonIndex { return _cancelButtonIndex; }
- (NSString*)buttonTitleAtIndex:(NSInteger)index {
  if (index < 0 || index >= (NSInteger)[_buttonTitles count]) return nil;
  return [_buttonTitles objectAtIndex:(NSUInteger)index];
}
- (NSInteger)addButtonWithTitle:(NSString*)title {
  [_buttonTitles addObject:title];
  return (NSInteger)[_buttonTitles count] - 1;
}
- (UIAlertViewStyle)alertViewStyle { return _alertViewStyle; }
- (void)setAlertViewStyle:(UIAlertViewStyle)style {
  _alertViewStyle = style;
  [_textFields release];
  _textFields = [[NSMutableArray alloc] init];
  const int fields = fieldCount(style);
  for (int i = 0; i < fields; ++i) [_textFields addObject:[[[UITextField alloc] init] autorelease]];
  if (style == UIAlertViewStyleSecureTextInput || style == UIAlertViewStyleLoginAndPasswordInput) {
    [[_textFields lastObject] setSecureTextEntry:YES];
  }
}
- (UITextField*)textFieldAtIndex:(NSInteger)index {
  if (index < 0 || index >= (NSInteger)[_textFields count]) {
    [NSException raise:NSRangeException
                format:@"textFieldIndex (%ld) is outside of the bounds of the array of text fields",
                       (long)index];
  }
  return [_textFields objectAtIndex:(NSUInteger)index];
}
- (void)show {
  hushwall::gnustep::ShownAlert shown;
  shown.title = utf8(_title);
  shown.message = utf8(_message);
  for (NSString* title in _buttonTitles) shown.buttons.push_back(utf8(title));
  shown.tag = _tag;
  for (UITextField* field in _textFields) {
    shown.fields.push_back({utf8([field placeholder]), [field isSecureTextEntry] != NO});
  }
  auto& state = hushwall::gnustep::standInState();
  state.alerts.push_back(shown);
  // The window keeps a shown alert alive until it is dismissed.
  [self retain];
  [state.onScreen release];
  state.onScreen = self;
}
@end

@implementation UILabel
- (NSString*)text { return _text; }
- (void)setText:(NSString*)text {
  [_text release];
  _text = [text copy];
}
- (void)dealloc {
  [_text release];
  [super dealloc];
}
@end

namespace hushwall::gnustep {

void tapAlertButton(std::int64_t index) {
  auto& state = standInState();
  UIAlertView* alert = state.onScreen;
  if (alert == nil) throw std::logic_error("no alert on screen");
  if (index < 0 || index >= [alert numberOfButtons]) {
    throw std::logic_error("the alert has no button " + std::to_string(index));
  }
  state.onScreen = nil;
  // As UIKit does: the tap, then the dismissal, each to the delegate the
  // alert has at that moment (the first may have cleared it).
  id delegate = [alert delegate];
  if ([delegate respondsToSelector:@selector(alertView:clickedButtonAtIndex:)]) {
    [delegate alertView:alert clickedButtonAtIndex:(NSInteger)index];
  }
  delegate = [alert delegate];
  if ([delegate respondsToSelector:@selector(alertView:didDismissWithButtonIndex:)]) {
    [delegate alertView:alert didDismissWithButtonIndex:(NSInteger)index];
  }
  [alert release];
}

void typeIntoAlertField(std::int64_t field, const std::string& text) {
  UIAlertView* alert = standInState().onScreen;
  if (alert == nil) throw std::logic_error("no alert on screen");
  if (field < 0 || field >= fieldCount([alert alertViewStyle])) {
    throw std::logic_error("the alert has no text field " + std::to_string(field));
  }
  [[alert textFieldAtIndex:(NSInteger)field] setText:[NSString stringWithUTF8String:text.c_str()]];
}

}  // namespace hushwall::gnustep
