// A bulletin object of the running SpringBoard, seen through the model's
// Bulletin interface: every read is a message to the host object, so the
// model judges exactly what SpringBoard would show.
#ifndef HUSHWALL_SPRINGBOARD_RUNTIME_BULLETIN_H_
#define HUSHWALL_SPRINGBOARD_RUNTIME_BULLETIN_H_

#include <utility>

#include "host/bulletin.h"
#include "host/value.h"

namespace hushwall {

class RuntimeBulletin : public host::Bulletin {
 public:
  // Holds the host object without reading it; nothing is cached, each call
  // asks the object again.
  explicit RuntimeBulletin(host::Value object) : object_(std::move(object)) {}

  host::OptText sectionID() const override;
  host::Value context() const override;
  host::OptText message() const override;

 private:
  host::Value object_;
};

}  // namespace hushwall

#endif  // HUSHWALL_SPRINGBOARD_RUNTIME_BULLETIN_H_
