#include "simhost/test_device.h"

#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "platform/linux/dbus_notify_center.h"
#include "platform/linux/device_bundles.h"
#include "platform/linux/device_bus_address.h"
#include "platform/linux/plist_file.h"

namespace hushwall::testing {
namespace {

constexpr char kSettingsFile[] =
    "/var/mobile/Library/Preferences/com.Corvanta.HushwallSettings.plist";

struct Database {
  explicit Database(const std::string& path) {
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
      sqlite3_close(db);
      db = nullptr;
    }
  }
  ~Database() { sqlite3_close(db); }
  sqlite3* db = nullptr;
};

}  // namespace

TestDevice::TestDevice() : bus_(root_.path()) {}

void TestDevice::writeSettings(const host::Dict& settings) const {
  std::filesystem::create_directories(
      std::filesystem::path(native(kSettingsFile)).parent_path());
  linux_platform::writeBinaryPlist(native(kSettingsFile), settings);
}

void TestDevice::writeFlags(const std::vector<std::pair<std::string, bool>>& flags) const {
  host::Dict settings;
  for (const auto& [key, on] : flags) settings[host::T(key)] = host::Value::boolean(on);
  writeSettings(settings);
}

void TestDevice::addToBlacklist(const std::string& phoneNumber, const std::string& name) const {
  Database database(databaseFile());
  sqlite3_stmt* statement = nullptr;
  if (database.db == nullptr ||
      sqlite3_prepare_v2(database.db, "INSERT INTO Blacklist (name, phoneNumber) VALUES (?, ?)",
                         -1, &statement, nullptr) != SQLITE_OK) {
    throw std::runtime_error("cannot write the blacklist of " + databaseFile());
  }
  sqlite3_bind_text(statement, 1, name.c_str(), -1, SQLITE_TRANSIENT);
  sqlite3_bind_text(statement, 2, phoneNumber.c_str(), -1, SQLITE_TRANSIENT);
  const int result = sqlite3_step(statement);
  sqlite3_finalize(statement);
  if (result != SQLITE_DONE) throw std::runtime_error("blacklist insert failed");
}

void TestDevice::writeChatStorage(
    const std::vector<std::pair<std::optional<std::string>, std::optional<std::string>>>& rows)
    const {
  const std::string path = native(
      host::toUtf8(linux_platform::documentsDirectoryOf(host::T("net.whatsapp.WhatsApp"))) +
      "/ChatStorage.sqlite");
  std::filesystem::remove_all(path);
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  sqlite3* raw = nullptr;
  const int opened = sqlite3_open(path.c_str(), &raw);
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> db(raw, sqlite3_close);
  sqlite3_stmt* insert = nullptr;
  if (opened != SQLITE_OK ||
      sqlite3_exec(db.get(), "CREATE TABLE ZWAMESSAGE (Z_PK INTEGER PRIMARY KEY, ZTOJID TEXT, "
                   "ZFROMJID TEXT)", nullptr, nullptr, nullptr) != SQLITE_OK ||
      sqlite3_prepare_v2(db.get(), "INSERT INTO ZWAMESSAGE (ZTOJID, ZFROMJID) VALUES (?, ?)", -1,
                         &insert, nullptr) != SQLITE_OK) {
    throw std::runtime_error("cannot write " + path);
  }
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(insert, sqlite3_finalize);
  for (const auto& [to, from] : rows) {
    if (to) sqlite3_bind_text(insert, 1, to->c_str(), -1, SQLITE_TRANSIENT);
    else sqlite3_bind_null(insert, 1);
    if (from) sqlite3_bind_text(insert, 2, from->c_str(), -1, SQLITE_TRANSIENT);
    else sqlite3_bind_null(insert, 2);
    if (sqlite3_step(insert) != SQLITE_DONE) throw std::runtime_error("cannot write " + path);
    sqlite3_reset(insert);
  }
}

std::vector<HistoryRow> TestDevice::history() const {
  if (!std::filesystem::exists(databaseFile())) return {};
  return readHistoryRows(databaseFile());
}

void TestDevice::post(const std::string& name) const {
  linux_platform::DBusNotifyCenter outside(linux_platform::deviceBusAddress(root()));
  outside.post(name);
}

bool TestDevice::announce(simhost::SimulatedApp& app, const std::string& name) const {
  // Observers of one name all run while the same signal is dispatched, so
  // once this late one has run, the library's earlier ones have too.
  auto arrived = std::make_shared<bool>(false);
  app.device().notifyCenter().addObserver(name, [arrived] { *arrived = true; },
                                          host::SuspensionBehavior::kHold);
  post(name);
  return app.device().notifyCenter().runUntil([&] { return *arrived; },
                                              std::chrono::seconds(5));
}

NotificationCounter::NotificationCounter(simhost::SimulatedApp& app,
                                         const std::vector<std::string>& names)
    : app_(app), counts_(std::make_shared<std::map<std::string, int>>()) {
  for (const std::string& name : names) {
    (*counts_)[name] = 0;
    auto counts = counts_;
    app.device().notifyCenter().addObserver(name, [counts, name] { ++(*counts)[name]; },
                                            host::SuspensionBehavior::kHold);
  }
}

int NotificationCounter::count(const std::string& name) const {
  auto found = counts_->find(name);
  if (found == counts_->end()) throw std::invalid_argument("not counting " + name);
  return found->second;
}

bool NotificationCounter::waitFor(const std::string& name, int atLeast) {
  return app_.device().notifyCenter().runUntil([&] { return count(name) >= atLeast; },
                                               std::chrono::seconds(5));
}

}  // namespace hushwall::testing
