// The simulated WhatsApp in which the hook benchmarks run: a device of its
// own (root folder and bus), this process as the messenger with its classes,
// and the library loaded into it the way the device injects it, so that the
// hooks measured are the installed ones.
//
// The benchmarks share one process, as start-up runs once per process; each
// states what it needs (settings, blacklist, where the database is) before it
// starts timing, and only what changes is written and announced.
#ifndef HUSHWALL_BENCH_WHATSAPP_UNDER_TEST_H_
#define HUSHWALL_BENCH_WHATSAPP_UNDER_TEST_H_

#include <string>
#include <utility>
#include <vector>

#include "bench/bench_sizes.h"
#include "bench/database_placement.h"
#include "host/runtime.h"
#include "simhost/simulated_app.h"
#include "simhost/test_device.h"

namespace hushwall::bench {

// Settings-file flags, as the settings bundle writes them.
using Flags = std::vector<std::pair<std::string, bool>>;

class WhatsAppUnderTest {
 public:
  // Starts the device and the app and loads the library at `libraryPath`.
  explicit WhatsAppUnderTest(const std::string& libraryPath);

  simhost::SimulatedApp& app() { return app_; }
  const testing::TestDevice& device() const { return device_; }
  // The app's connection and application delegate objects.
  const host::Value& connection() const { return connection_; }
  const host::Value& delegate() const { return delegate_; }
  // The messenger's own processIncomingMessageStanzas:, as it was before the
  // library hooked it.
  host::IMP hostDelivery() const { return hostDelivery_; }

  // The settings file holds exactly these flags, announced when they change.
  void useFlags(const Flags& flags);
  // The Blacklist table holds exactly these numbers, announced when changed.
  void useBlacklist(const std::vector<std::string>& numbers);
  // Where HSWL.db is; both places hold the same blacklist.
  void useStorage(Storage storage);
  // The native path at which the library opens HSWL.db (a symbolic link).
  std::string databasePath() const { return device_.databaseFile(); }

  // A number that no test uses twice in this process, for unique texts.
  long nextSerial() { return ++serial_; }

 private:
  testing::TestDevice device_;
  PlacedDatabase onDisk_;
  PlacedDatabase inMemory_;
  simhost::SimulatedApp app_;
  FollowingLinks links_{device_.root()};
  host::IMP hostDelivery_ = nullptr;
  host::Value connection_;
  host::Value delegate_;
  Flags flags_;
  std::vector<std::string> blacklist_;
  Storage storage_ = Storage::kDisk;
  long serial_ = 0;
};

}  // namespace hushwall::bench

#endif  // HUSHWALL_BENCH_WHATSAPP_UNDER_TEST_H_
