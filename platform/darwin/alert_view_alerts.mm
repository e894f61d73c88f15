#import <UIKit/UIKit.h>

#include <utility>

#include "platform/darwin/device_services.h"
#include "platform/darwin/exception_barrier.h"
#include "platform/darwin/objc_values.h"

// UIAlertView is deprecated since iOS 9 in favour of UIAlertController (which
// came with iOS 8), but the confirmation must run on iOS 7 too, which has no
// UIAlertController, and the model object is the alert's delegate by design
// (it answers alertView:clickedButtonAtIndex:). So the alert stays, its
// deprecation silenced for this file only.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"

// The alert's delegate: hands the tapped button, and what the alert shows,
// to the logic. An alert does not keep its delegate, so the delegate keeps
// itself until the alert is gone: UIKit still messages it after the tap
// (willDismiss, didDismiss), so it lets go on dismissal, not on the tap.
@interface HWAlertDelegate : NSObject <UIAlertViewDelegate> {
  hushwall::host::Alerts::Delegate delegate_;
}
- (id)initWithDelegate:(hushwall::host::Alerts::Delegate)delegate;
@end

@implementation HWAlertDelegate
- (id)initWithDelegate:(hushwall::host::Alerts::Delegate)delegate {
  if ((self = [super init]) != nil) delegate_ = std::move(delegate);
  return self;
}

- (void)alertView:(UIAlertView*)alertView clickedButtonAtIndex:(NSInteger)buttonIndex {
  using hushwall::darwin::textOf;
  hushwall::host::AlertView answered;
  answered.title = textOf([alertView title]);
  answered.message = textOf([alertView message]);
  const NSInteger cancel = [alertView cancelButtonIndex];
  for (NSInteger i = 0; i < [alertView numberOfButtons]; ++i) {
    if (i == cancel) {
      answered.cancelButtonTitle = textOf([alertView buttonTitleAtIndex:i]);
    } else {
      answered.otherButtonTitles.push_back(textOf([alertView buttonTitleAtIndex:i]));
    }
  }
  answered.tag = [alertView tag];
  hushwall::darwin::raisedInside(
      [&] { delegate_(answered, static_cast<std::intptr_t>(buttonIndex)); });
}

- (void)alertView:(UIAlertView*)alertView didDismissWithButtonIndex:(NSInteger)buttonIndex {
  [alertView setDelegate:nil];
  [self release];
}
@end

namespace hushwall::darwin {

void AlertViewAlerts::show(const host::AlertView& alert, Delegate delegate) {
  HWAlertDelegate* answer = [[HWAlertDelegate alloc] initWithDelegate:std::move(delegate)];
  const auto& others = alert.otherButtonTitles;
  UIAlertView* view =
      [[UIAlertView alloc] initWithTitle:stringOf(alert.title)
                                 message:stringOf(alert.message)
                                delegate:answer
                       cancelButtonTitle:stringOf(alert.cancelButtonTitle)
                       otherButtonTitles:(others.empty() ? nil : stringOf(others.front())), nil];
  for (std::size_t i = 1; i < others.size(); ++i) [view addButtonWithTitle:stringOf(others[i])];
  [view setTag:static_cast<NSInteger>(alert.tag)];
  [view show];
  [view release];
}

}  // namespace hushwall::darwin

#pragma clang diagnostic pop
