// The platform's alert: a title, a message, a cancel button and further
// buttons, and a delegate told which button was tapped.
#ifndef HUSHWALL_HOST_ALERTS_H_
#define HUSHWALL_HOST_ALERTS_H_

#include <cstdint>
#include <functional>
#include <vector>

#include "host/text.h"

namespace hushwall::host {

// What the delegate learns of the alert it is told about.
struct AlertView {
  Text title;
  Text message;
  Text cancelButtonTitle;           // index 0
  std::vector<Text> otherButtonTitles;  // index 1, 2, ...
  std::int64_t tag = 0;
};

class Alerts {
 public:
  // alertView:clickedButtonAtIndex: with the alert and the tapped index.
  using Delegate = std::function<void(const AlertView& alert, std::intptr_t buttonIndex)>;

  virtual ~Alerts() = default;
  // initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:,
  // setTag:, show. The delegate runs later, when the user taps a button.
  virtual void show(const AlertView& alert, Delegate delegate) = 0;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_ALERTS_H_
