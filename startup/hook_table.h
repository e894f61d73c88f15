// The hook table: which methods of which host classes Hushwall replaces or
// adds, and in which order. It is plain data; install() walks it.
#ifndef HUSHWALL_STARTUP_HOOK_TABLE_H_
#define HUSHWALL_STARTUP_HOOK_TABLE_H_

#include <cstddef>

#include "host/runtime.h"

namespace hushwall {

// The firmware versions on which a host method exists, as major * 100 +
// minor (iOS 8.2 is 802), from `since` up to but not including `before`.
// Both 0: not bound to the firmware (the messenger's own classes, which
// come and go with WhatsApp's versions, and methods the library adds).
struct Availability {
  int since;
  int before;
  // Where the range comes from, for whoever extends it.
  const char* note;
};

struct HookEntry {
  enum class Kind { kInstance, kClass };  // kClass: the method lives on the meta-class
  enum class How { kReplace, kAdd };

  const char* className;
  Kind kind;
  const char* selector;
  How how;
  const char* types;         // type encoding for kAdd, null for kReplace
  host::IMP implementation;  // the replacement, or the added method
  host::IMP* slot;           // kReplace: where the original implementation goes
  Availability availability;
};

struct HookGroup {
  const char* name;
  const HookEntry* entries;
  std::size_t count;
};

// Inside the messenger.
extern const HookGroup kWhatsAppHooks;
// Inside the home screen.
extern const HookGroup kSpringBoardHooks;

// Installs a group in table order. A class is looked up once for each run of
// consecutive rows that name it. A class the running host lacks comes back
// nil and is handed on as it is: the runtime treats replace and add on nil as
// doing nothing, so an older or newer host version still starts.
void installHookGroup(host::Runtime& runtime, const HookGroup& group);

}  // namespace hushwall

#endif  // HUSHWALL_STARTUP_HOOK_TABLE_H_
