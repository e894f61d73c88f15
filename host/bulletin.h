// A notification as SpringBoard hands it to its observers (a bulletin).
#ifndef HUSHWALL_HOST_BULLETIN_H_
#define HUSHWALL_HOST_BULLETIN_H_

#include "host/text.h"
#include "host/value.h"

namespace hushwall::host {

class Bulletin {
 public:
  virtual ~Bulletin() = default;
  // The identifier of the app that raised it.
  virtual OptText sectionID() const = 0;
  // Its context: a dictionary of nested dictionaries and strings (or nil).
  virtual Value context() const = 0;
  // The text shown: for the messenger, the sender's name, ":" and the text.
  virtual OptText message() const = 0;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_BULLETIN_H_
