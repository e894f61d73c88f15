#include "startup/settings.h"

#include "host/env.h"

namespace hushwall {

bool settings_Enabled = false;
bool settings_SaveHistory = true;
bool settings_ShowStatusBarIcon = false;
bool settings_Vibrate = false;
bool settings_ContactsOnly = false;
bool settings_DeleteMessages = true;
bool settings_ActionButton = false;

std::unique_ptr<host::Dict> settingsDictionary;

namespace {

// The keys in the order they are read. "LockSettings" belongs to the settings
// bundle: its value is read like the others and thrown away.
struct SettingsKey {
  const char* key;
  bool* flag;  // null: read and discarded
};

const SettingsKey kSettingsKeys[] = {
    {"Enabled", &settings_Enabled},
    {"SaveHistory", &settings_SaveHistory},
    {"ShowStatusbarIcon", &settings_ShowStatusBarIcon},
    {"Vibrate", &settings_Vibrate},
    {"ContactsOnly", &settings_ContactsOnly},
    {"LockSettings", nullptr},
    {"DeleteMessages", &settings_DeleteMessages},
    {"ActionButton", &settings_ActionButton},
};

}  // namespace

void SettingsChanged() {
  settingsDictionary.reset();
  std::optional<host::Dict> contents =
      host::env().fileSystem->dictionaryWithContentsOfFile(host::T(kSettingsFilePath));
  // A missing, unreadable or non-dictionary file reads as an empty one, so
  // every flag keeps the value it had.
  settingsDictionary = std::make_unique<host::Dict>(contents ? std::move(*contents) : host::Dict());

  for (const SettingsKey& entry : kSettingsKeys) {
    auto found = settingsDictionary->find(host::T(entry.key));
    if (found == settingsDictionary->end()) continue;
    bool value = found->second.boolValue();
    if (entry.flag != nullptr) *entry.flag = value;
  }
}

}  // namespace hushwall
