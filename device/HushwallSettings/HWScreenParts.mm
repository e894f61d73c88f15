#include "HWScreenParts.h"

#include <Block.h>

#include "HWSettingsServices.h"

// UIAlertView is deprecated since iOS 9 (UIAlertController came with iOS 8),
// but the package runs on iOS 7.0 to 8.x, and iOS 7 has no
// UIAlertController: the alerts every firmware in range can show are
// UIAlertView's. So it stays, its deprecation silenced for this file only,
// the one file of the settings bundle that shows alerts.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"

typedef void (^HWAnswer)(UIAlertView* alert, NSInteger button);

// An alert's delegate that hands the button the user closed it with to a
// block. UIAlertView does not retain its delegate, so the delegate keeps
// itself, and the screen that asked, until the alert is gone. The screen is
// retained here, not left to the copied block: a block copy retains the
// objects it captures under Apple's runtime, but libBlocksRuntime, which the
// GNUstep tests run on, leaves them alone. It answers on dismissal, not on
// the tap: UIKit messages the delegate until then (willDismiss and
// didDismiss after clickedButton), and an alert dismissed without a tap is
// gone all the same.
@interface HWAlertAnswer : NSObject <UIAlertViewDelegate> {
  id _owner;
  HWAnswer _answer;
}
- (id)initWithOwner:(id)owner answer:(HWAnswer)answer;
@end

@implementation HWAlertAnswer
- (id)initWithOwner:(id)owner answer:(HWAnswer)answer {
  if ((self = [super init]) != nil) {
    _owner = [owner retain];
    // Block_copy, not -copy: under the GNUstep runtime of the tests a block
    // answers no messages.
    _answer = Block_copy(answer);
  }
  return self;
}

- (void)dealloc {
  Block_release(_answer);
  [_owner release];
  [super dealloc];
}

- (void)alertView:(UIAlertView*)alertView didDismissWithButtonIndex:(NSInteger)buttonIndex {
  // Nothing may reach this delegate once it is released.
  [alertView setDelegate:nil];
  _answer(alertView, buttonIndex);
  [self release];
}
@end

namespace {

// Shows `alert` for `owner`; `answer` gets the button it was closed with.
void show(UIAlertView* alert, id owner, HWAnswer answer) {
  // Released on dismissal.
  [alert setDelegate:[[HWAlertAnswer alloc] initWithOwner:owner answer:answer]];
  [alert show];
}

}  // namespace

void HWShowProblem(const std::string& message) {
  UIAlertView* alert = [[[UIAlertView alloc] initWithTitle:@"Hushwall"
                                                   message:hushwall::settings::ns(message)
                                                  delegate:nil
                                         cancelButtonTitle:@"OK"
                                         otherButtonTitles:nil] autorelease];
  [alert show];
}

void HWAskForNumberAndName(UIViewController* screen, NSString* title, NSString* message,
                           void (^entered)(NSString* number, NSString* name)) {
  UIAlertView* prompt = [[[UIAlertView alloc] initWithTitle:title
                                                    message:message
                                                   delegate:nil
                                          cancelButtonTitle:@"Cancel"
                                          otherButtonTitles:@"Add", nil] autorelease];
  // The login style is the one alert style with two fields (iOS 5 and
  // later), so number and name are asked together and a cancel leaves
  // nothing half entered, where the plain style would need two alerts one
  // after the other. Its second field is a password field: the name is
  // shown as typed.
  [prompt setAlertViewStyle:UIAlertViewStyleLoginAndPasswordInput];
  UITextField* number = [prompt textFieldAtIndex:0];
  [number setPlaceholder:@"Number"];
  [number setKeyboardType:UIKeyboardTypePhonePad];
  UITextField* name = [prompt textFieldAtIndex:1];
  [name setPlaceholder:@"Name"];
  [name setSecureTextEntry:NO];
  show(prompt, screen, ^(UIAlertView* answered, NSInteger button) {
    if (button == [answered cancelButtonIndex]) return;
    entered([[answered textFieldAtIndex:0] text], [[answered textFieldAtIndex:1] text]);
  });
}

void HWConfirm(UIViewController* screen, NSString* title, NSString* message, NSString* action,
               void (^confirmed)(void)) {
  // An alert rather than an action sheet with a destructive button: an
  // action sheet must be anchored (on the iPad, to the bar button as a
  // popover, where it has no cancel button), and the alert shares the
  // delegate above with the number prompt.
  UIAlertView* confirm = [[[UIAlertView alloc] initWithTitle:title
                                                     message:message
                                                    delegate:nil
                                           cancelButtonTitle:@"Cancel"
                                           otherButtonTitles:action, nil] autorelease];
  show(confirm, screen, ^(UIAlertView* answered, NSInteger button) {
    if (button != [answered cancelButtonIndex]) confirmed();
  });
}

#pragma clang diagnostic pop

UILabel* HWEmptyStateLabel(NSString* text) {
  UILabel* label = [[[UILabel alloc] init] autorelease];
  [label setText:text];
  return label;
}
