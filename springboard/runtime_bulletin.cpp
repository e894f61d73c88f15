#include "springboard/runtime_bulletin.h"

#include "host/env.h"

namespace hushwall {

// A value that is not a string (or nil, from a message to nil) reads as no
// text, the same answer the comparisons downstream would give it.
host::OptText RuntimeBulletin::sectionID() const {
  return host::env().runtime->send(object_, "sectionID", {}).text();
}

host::Value RuntimeBulletin::context() const {
  return host::env().runtime->send(object_, "context", {});
}

host::OptText RuntimeBulletin::message() const {
  return host::env().runtime->send(object_, "message", {}).text();
}

}  // namespace hushwall
