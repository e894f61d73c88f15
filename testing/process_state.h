// Puts the library's process-wide state (the settings flags and the
// in-memory blacklist) back to how a freshly loaded library has it, and
// restores it afterwards, so tests in one binary do not see each other.
// Header-only: only the test binaries that link the logic include it.
#ifndef HUSHWALL_TESTING_PROCESS_STATE_H_
#define HUSHWALL_TESTING_PROCESS_STATE_H_

#include <initializer_list>
#include <string>
#include <vector>

#include "startup/blacklist.h"
#include "startup/settings.h"

namespace hushwall::testing {

class FreshProcessState {
 public:
  FreshProcessState() {
    settings_Enabled = false;
    settings_SaveHistory = true;
    settings_ShowStatusBarIcon = false;
    settings_Vibrate = false;
    settings_ContactsOnly = false;
    settings_DeleteMessages = true;
    settings_ActionButton = false;
    settingsDictionary.reset();
    if (blacklistNumbers != nullptr) blacklistNumbers->clear();
  }
  ~FreshProcessState() {
    if (blacklistNumbers != nullptr) blacklistNumbers->clear();
  }
  FreshProcessState(const FreshProcessState&) = delete;
  FreshProcessState& operator=(const FreshProcessState&) = delete;

  // Sets the in-memory blacklist directly, for tests of its readers.
  static void setBlacklist(std::initializer_list<const char*> entries) {
    if (blacklistNumbers == nullptr) blacklistNumbers = new std::vector<host::Text>();
    blacklistNumbers->clear();
    for (const char* e : entries) blacklistNumbers->push_back(host::T(e));
  }
};

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_PROCESS_STATE_H_
