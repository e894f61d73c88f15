// The status bar of the running process: images shown and hidden by name.
#ifndef HUSHWALL_HOST_STATUS_BAR_H_
#define HUSHWALL_HOST_STATUS_BAR_H_

#include "host/text.h"

namespace hushwall::host {

class StatusBar {
 public:
  virtual ~StatusBar() = default;
  // addStatusBarImageNamed: / removeStatusBarImageNamed:. Both tolerate being
  // asked again for a name already shown or already hidden.
  virtual void addImageNamed(const Text& name) = 0;
  virtual void removeImageNamed(const Text& name) = 0;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_STATUS_BAR_H_
