// A host object that is not a plain value: a message stanza, a controller, a
// class. The logic never looks inside one; it holds it in a Value and reaches
// it only by sending it messages through the host runtime (runtime.h). Each
// platform defines its own kinds of object on top of this base.
#ifndef HUSHWALL_HOST_OBJECT_H_
#define HUSHWALL_HOST_OBJECT_H_

namespace hushwall::host {

class Object {
 public:
  virtual ~Object() = default;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_OBJECT_H_
