// A simulated device for tests that load the library into a simulated app:
// a fresh device root with its own bus, and the outside world's side of it
// (what the settings bundle does: write the settings file and the blacklist,
// post notifications, read the history).
//
// Made in the test's own process, before the app's child process starts, so
// that the bus and the files outlive the child.
#ifndef HUSHWALL_SIMHOST_TEST_DEVICE_H_
#define HUSHWALL_SIMHOST_TEST_DEVICE_H_

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/value.h"
#include "simhost/simulated_app.h"
#include "testing/database_rows.h"
#include "testing/private_bus.h"
#include "testing/temp_device_root.h"

namespace hushwall::testing {


// Counts, inside an app's process, the notifications of some names that
// reach it (the process's own posts included, as on the device). Made before
// the library is loaded, so that nothing the library posts at start-up or
// later is missed.
class NotificationCounter {
 public:
  NotificationCounter(simhost::SimulatedApp& app, const std::vector<std::string>& names);

  int count(const std::string& name) const;
  // Runs the app's main loop until `name` has arrived `atLeast` times in
  // all; false when that did not happen within five seconds.
  bool waitFor(const std::string& name, int atLeast = 1);

 private:
  simhost::SimulatedApp& app_;
  std::shared_ptr<std::map<std::string, int>> counts_;
};

class TestDevice {
 public:
  TestDevice();
  TestDevice(const TestDevice&) = delete;
  TestDevice& operator=(const TestDevice&) = delete;

  // The device root (native path), as SimulatedApp takes it.
  const std::string& root() const { return root_.path(); }
  std::string native(const std::string& devicePath) const { return root_.native(devicePath); }
  std::string databaseFile() const { return root_.databaseFile(); }

  // The empty database in the data directory / in the settings bundle.
  void installDatabase() const { root_.installDatabase(); }
  void installSettingsBundle() const { root_.installSettingsBundle(); }

  // Writes the settings file as the settings bundle does (binary plist).
  void writeSettings(const host::Dict& settings) const;
  // The same from a list of boolean flags ({"Enabled", true}, ...).
  void writeFlags(const std::vector<std::pair<std::string, bool>>& flags) const;
  // Inserts a Blacklist row into the installed database.
  void addToBlacklist(const std::string& phoneNumber, const std::string& name = "") const;
  // The History table in id order; empty when there is no database.
  std::vector<HistoryRow> history() const;
  // Writes WhatsApp's message database ("ChatStorage.sqlite" in its
  // documents directory) afresh, whatever stood there, with one ZWAMESSAGE
  // row per (ZTOJID, ZFROMJID), bound as they are.
  void writeChatStorage(
      const std::vector<std::pair<std::optional<std::string>, std::optional<std::string>>>& rows)
      const;

  // Posts a notification from a bus connection of its own, the way a
  // process outside the library would. Does not wait for anyone.
  void post(const std::string& name) const;
  // Posts from outside and runs the app's main loop until the app has
  // received it (every observer of the name in the app has run). False when
  // it did not arrive within five seconds.
  bool announce(simhost::SimulatedApp& app, const std::string& name) const;

 private:
  TempDeviceRoot root_;
  PrivateBus bus_;
};

}  // namespace hushwall::testing

#endif  // HUSHWALL_SIMHOST_TEST_DEVICE_H_
