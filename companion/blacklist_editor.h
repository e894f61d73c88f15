// The blacklist as the settings bundle shows and edits it. It is the one
// writer of Blacklist rows outside the messenger's own chat-list action, and
// every change it makes is announced with contactsChanged, on which every
// process with the library loaded reloads its copy of the list.
#ifndef HUSHWALL_COMPANION_BLACKLIST_EDITOR_H_
#define HUSHWALL_COMPANION_BLACKLIST_EDITOR_H_

#include <cstdint>
#include <string>
#include <vector>

#include "host/file_system.h"
#include "host/notify_center.h"

namespace hushwall::companion {

// One Blacklist row, ready to show (see display_text.h).
struct BlacklistEntry {
  std::int64_t id = 0;
  std::string name;
  std::string phoneNumber;
};

// The name stored when the user gives none, as the chat-list action does
// for a chat without one.
inline constexpr char kAnonymousName[] = "Anonymous";

class BlacklistEditor {
 public:
  BlacklistEditor(host::FileSystem& files, host::NotifyCenter& notifications)
      : files_(files), notifications_(notifications) {}

  // Every row in the order in which they were added.
  std::vector<BlacklistEntry> entries();

  // Adds the number with a name. Throws std::invalid_argument, writing
  // nothing, for a malformed number, a name that is not valid UTF-8, or a
  // number that is already on the list as written.
  void add(const std::string& phoneNumber, const std::string& name);

  // Removes every row whose number is exactly `phoneNumber` and returns how
  // many went. Throws std::invalid_argument for a malformed number and
  // std::runtime_error when no row holds it.
  int removeNumber(const std::string& phoneNumber);

  // Removes the row `id` and every other row with the same number, so that
  // the number is no longer blocked. Throws std::runtime_error when there is
  // no such row.
  int removeEntry(std::int64_t id);

 private:
  host::FileSystem& files_;
  host::NotifyCenter& notifications_;
};

}  // namespace hushwall::companion

#endif  // HUSHWALL_COMPANION_BLACKLIST_EDITOR_H_
