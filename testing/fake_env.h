// Test doubles for the platform, over a real temporary device root.
//
// Files are real (the database is a real SQLite file under the root); the
// services whose effect is outside the process (notifications, sound, the
// status bar, the address book, the clock) are recorded instead, so a test
// can say what the logic asked of the platform.
#ifndef HUSHWALL_TESTING_FAKE_ENV_H_
#define HUSHWALL_TESTING_FAKE_ENV_H_

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/env.h"
#include "platform/linux/device_root_file_system.h"
#include "testing/temp_device_root.h"

namespace hushwall::testing {

// Records posts; delivers them to observers only when the test runs the
// "main loop" (deliver()), as the real center does.
class RecordingNotifyCenter : public host::NotifyCenter {
 public:
  void post(const std::string& name) override;
  void addObserver(const std::string& name, Callback callback,
                   host::SuspensionBehavior behavior) override;
  // Runs observers for every queued post, including posts they make.
  void deliver();

  std::vector<std::string> posted;                              // every post, in order
  std::vector<std::pair<std::string, host::SuspensionBehavior>> observed;  // registrations

 private:
  std::deque<std::string> queue_;
  std::multimap<std::string, Callback> observers_;
};

// Contacts as exact texts.
class FakeAddressBook : public host::AddressBook {
 public:
  bool hasPersonMatchingPhoneNumber(const host::OptText& number) override;
  std::set<host::Text> contacts;
  std::vector<host::OptText> lookups;
};

class RecordingSystemSounds : public host::SystemSounds {
 public:
  void play(std::uint32_t soundId) override { played.push_back(soundId); }
  std::vector<std::uint32_t> played;
};

class RecordingStatusBar : public host::StatusBar {
 public:
  void addImageNamed(const host::Text& name) override;
  void removeImageNamed(const host::Text& name) override;
  std::set<host::Text> shown;
  std::vector<std::string> calls;  // "add:HSWL", "remove:HSWL"
};

class FakeClock : public host::Clock {
 public:
  double now() override { return time; }
  double time = 1400000000.5;
};

class FakeBundles : public host::Bundles {
 public:
  explicit FakeBundles(host::FileSystem& fs) : fs_(fs) {}
  host::OptText mainBundleIdentifier() override { return identifier; }
  host::OptText bundlePath(const host::Text& devicePath) override;
  host::OptText documentsDirectory() override { return documents; }

  host::OptText identifier = host::T("net.whatsapp.WhatsApp");
  host::OptText documents = host::T("/var/mobile/Applications/WhatsApp/Documents");

 private:
  host::FileSystem& fs_;
};

// Everything at once, installed as the process's Env for the test's lifetime.
class FakeEnv {
 public:
  FakeEnv();
  ~FakeEnv();
  FakeEnv(const FakeEnv&) = delete;
  FakeEnv& operator=(const FakeEnv&) = delete;

  TempDeviceRoot root;
  linux_platform::DeviceRootFileSystem fileSystem{root.path()};
  RecordingNotifyCenter notifyCenter;
  FakeAddressBook addressBook;
  RecordingSystemSounds systemSounds;
  RecordingStatusBar statusBar;
  FakeClock clock;
  FakeBundles bundles{fileSystem};

 private:
  host::Env env_;
  host::Env* previous_;
};

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_FAKE_ENV_H_
