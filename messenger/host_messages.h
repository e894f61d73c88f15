// How the messenger hooks reach the host's objects: only by sending them
// messages through the host runtime, exactly as the messenger's own code
// would, so that a host object is never looked into directly.
#ifndef HUSHWALL_MESSENGER_HOST_MESSAGES_H_
#define HUSHWALL_MESSENGER_HOST_MESSAGES_H_

#include "host/env.h"
#include "host/runtime.h"
#include "host/value.h"

namespace hushwall {

// A message to a host object (nil answers nil).
inline host::Value sendTo(const host::Value& receiver, const host::Selector& selector,
                          const host::Args& args = {}) {
  return host::env().runtime->send(receiver, selector, args);
}

// valueForKey: with a literal key.
inline host::Value valueForKey(const host::Value& object, const char* key) {
  return sendTo(object, "valueForKey:", {host::Value::string(host::T(key))});
}

using host::argumentAt;

}  // namespace hushwall

#endif  // HUSHWALL_MESSENGER_HOST_MESSAGES_H_
