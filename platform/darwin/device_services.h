// The device's platform services behind the host/ interfaces, each a thin
// pass-through to the system function or class that provides it. No
// decision is taken here: the logic decides, the platform carries out.
#ifndef HUSHWALL_PLATFORM_DARWIN_DEVICE_SERVICES_H_
#define HUSHWALL_PLATFORM_DARWIN_DEVICE_SERVICES_H_

#include <optional>
#include <string>

#include "host/address_book.h"
#include "host/alerts.h"
#include "host/bundle.h"
#include "host/clock.h"
#include "host/file_system.h"
#include "host/notify_center.h"
#include "host/status_bar.h"
#include "host/system_sounds.h"
#include "platform/darwin/optional_symbols.h"

namespace hushwall::darwin {

// CFNotificationCenterGetDarwinNotifyCenter. The center's callbacks are
// plain functions without context and the library adds its observers with
// a null observer pointer, so one function serves every name and runs the
// callbacks kept for the name it is told.
class DarwinNotifyCenter : public host::NotifyCenter {
 public:
  void post(const std::string& name) override;
  void addObserver(const std::string& name, Callback callback,
                   host::SuspensionBehavior behavior) override;
};

// ABAddressBookCreate and ABCFindPersonMatchingPhoneNumber, the latter
// found at run time. Where the firmware lacks it, nobody is ever found:
// the answer a failed lookup gives anyway, so contacts-only blocks every
// number there rather than the library failing to load.
class ContactsAddressBook : public host::AddressBook {
 public:
  explicit ContactsAddressBook(FindPersonFunction findPerson) : findPerson_(findPerson) {}
  bool hasPersonMatchingPhoneNumber(const host::OptText& number) override;

 private:
  FindPersonFunction findPerson_;
};

// AudioServicesPlaySystemSound.
class AudioSystemSounds : public host::SystemSounds {
 public:
  void play(std::uint32_t soundId) override;
};

// -[UIApplication addStatusBarImageNamed:] and removeStatusBarImageNamed:.
class ApplicationStatusBar : public host::StatusBar {
 public:
  void addImageNamed(const host::Text& name) override;
  void removeImageNamed(const host::Text& name) override;
};

// [NSDate date].
class DeviceClock : public host::Clock {
 public:
  double now() override;
};

// NSBundle and NSSearchPathForDirectoriesInDomains.
class FoundationBundles : public host::Bundles {
 public:
  host::OptText mainBundleIdentifier() override;
  host::OptText bundlePath(const host::Text& devicePath) override;
  host::OptText documentsDirectory() override;
};

// NSFileManager, NSData and property lists, at the device's own paths.
class FoundationFileSystem : public host::FileSystem {
 public:
  std::string nativePath(const host::Text& devicePath) override;
  bool fileExists(const host::Text& devicePath) override;
  bool removeItem(const host::Text& devicePath) override;
  bool createDirectory(const host::Text& devicePath) override;
  bool copyItem(const host::Text& fromDevicePath, const host::Text& toDevicePath) override;
  bool writeAtomically(const host::Text& devicePath, const host::Bytes& bytes) override;
  std::optional<host::Dict> dictionaryWithContentsOfFile(const host::Text& devicePath) override;
  std::optional<std::vector<host::Text>> contentsOfDirectory(const host::Text& devicePath) override;
};

// UIAlertView, whose delegate hands the tapped button to the logic.
class AlertViewAlerts : public host::Alerts {
 public:
  void show(const host::AlertView& alert, Delegate delegate) override;
};

}  // namespace hushwall::darwin

#endif  // HUSHWALL_PLATFORM_DARWIN_DEVICE_SERVICES_H_
