// hushwallctl: the settings companion of a simulated device.
//
// It does what the settings bundle does on a phone: it writes the settings
// file, edits the blacklist, asks SpringBoard to hide the status-bar icon,
// shows the block history and the saved pictures, and listens for history
// changes. Like the bundle it shares nothing with the library but the
// device's files and its notifications, which is why it is built without the
// library's logic.
//
// Exit status: 0 done; 1 the device could not do it (no database, no such
// blacklist entry or history row, an unreadable settings file, fewer
// notifications than awaited, a change the user did not confirm); 2 a bad
// command line (unknown key, bad value, malformed or already listed number,
// bad notification name, text that is not UTF-8, a root that is not a
// device, a root too long for the bus socket, an unconfirmed deletion without
// a terminal to ask on), where nothing is changed; 3 a running bus refused the
// post, or there is no bus for `post`, `icon hide` and `watch`, whose only
// effect is on the bus.
//
// A change is written before it is announced. A change to a device whose bus
// is not running is not an error: no process runs without the bus, so none
// can miss the notification, and each reads the settings and the blacklist in
// full when it starts. The change stays, stderr says so, and the status is 0.
#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <sdbus-c++/Error.h>

#include "companion/blacklist_editor.h"
#include "companion/history_list.h"
#include "host/text.h"
#include "model/paths.h"
#include "platform/linux/dbus_notify_center.h"
#include "platform/linux/device_bus_address.h"
#include "platform/linux/device_root.h"
#include "platform/linux/device_root_file_system.h"
#include "platform/linux/file_lock.h"
#include "platform/linux/plist_file.h"
#include "platform/linux/sqlite_no_links.h"
#include "startup/notification_names.h"
#include "startup/settings.h"
#include "tools/command_line_checks.h"
#include "tools/confirmation.h"
#include "tools/device_root.h"
#include "tools/display_width.h"
#include "tools/device_session.h"
#include "tools/history_table.h"
#include "tools/locale_date.h"
#include "tools/settings_assignments.h"

namespace hushwall::tools {
namespace {

namespace fs = std::filesystem;
using linux_platform::DBusNotifyCenter;

class BusUnavailable : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A device root as the companion sees it: files under it, and its bus.
class Device {
 public:
  // The bus socket's address is derived from the root's path, so every
  // process of the device must spell the root the same way: canonically.
  explicit Device(const std::string& root) : root_(existingDeviceRoot(root)), files_(root_) {}

  const std::string& root() const { return root_; }
  // Every file of the device is reached through it, never through a link.
  const linux_platform::DeviceRoot& files() const { return files_; }

  std::string databaseFile() const {
    const std::string devicePath = std::string(kDataDirectory) + kDatabaseComponent;
    linux_platform::Fd file = files_.open(devicePath, O_PATH);
    struct stat st {};
    if (!file && errno != ENOENT) files_.failed("cannot open", devicePath);
    if (!file || ::fstat(file.get(), &st) != 0 || !S_ISREG(st.st_mode)) {
      throw std::runtime_error("no database at " + files_.joined(devicePath) +
                               ": the device is not set up (SpringBoard copies the template "
                               "there when it first starts)");
    }
    return files_.fileForSqlite(devicePath);
  }

  std::unique_ptr<DBusNotifyCenter> connect() const {
    std::string notRunning = "the device's bus is not running at " +
                             linux_platform::deviceBusSocketPath(root_) + ": start the device first";
    if (!linux_platform::deviceBusIsRunning(root_)) throw BusUnavailable(notRunning);
    try {
      return std::make_unique<DBusNotifyCenter>(linux_platform::deviceBusAddress(root_));
    } catch (const sdbus::Error& e) {
      throw BusUnavailable("the device's bus at " + linux_platform::deviceBusSocketPath(root_) +
                           " refused the connection (" + e.getMessage() + ")");
    }
  }

  void post(const std::string& name) const { connect()->post(name); }

  // A change is announced after it is written; a root whose bus address
  // cannot even be formed is refused before the change instead.
  void checkBusAddress() const { (void)linux_platform::deviceBusSocketPath(root_); }

 private:
  std::string root_;
  linux_platform::DeviceRoot files_;
};

// Tells the device's processes about a change that is already on disk.
void announce(const Device& device, const std::string& name) {
  if (!linux_platform::deviceBusIsRunning(device.root())) {
    std::cerr << "hushwallctl: " << name << " not posted: no process was running (the device's bus "
              << "is not running at " << linux_platform::deviceBusSocketPath(device.root())
              << "); the change is saved and each process reads it when it starts\n";
    return;
  }
  try {
    device.post(name);
  } catch (const std::exception& e) {
    throw BusUnavailable(name + " not posted: " + e.what() +
                        " (the change is saved; the device's processes read it when they start)");
  }
  std::cout << "posted " << name << "\n";
}

void printJson(const nlohmann::json& value) { std::cout << value.dump(2) << "\n"; }

// --- settings ---------------------------------------------------------------

// The settings file's bytes; nothing when there is none. Anything else that
// is not a regular file (a link, a FIFO, a folder) is an error.
std::optional<std::string> settingsFileBytes(const linux_platform::DeviceRoot& files) {
  try {
    return files.readRegularFile(kSettingsFilePath, linux_platform::kMaxSettingsFileBytes);
  } catch (const linux_platform::DeviceFileError& e) {
    if (e.error() == ENOENT) return std::nullopt;
    throw;
  }
}

void writeSettings(const Device& device, const std::vector<std::string>& words, bool keepOthers) {
  const host::Dict changes = parseSettingsAssignments(words);
  device.checkBusAddress();
  const linux_platform::DeviceRoot& files = device.files();
  const std::string path = files.joined(kSettingsFilePath);
  files.makeDirectories(fs::path(kSettingsFilePath).parent_path().string());
  // Another writer between this read and the rename would lose its change.
  linux_platform::FileLock lock(files, kSettingsFilePath);
  host::Dict content;
  if (keepOthers) {
    if (std::optional<std::string> bytes = settingsFileBytes(files)) {
      std::optional<host::Dict> existing = linux_platform::plistDictionaryFromBytes(std::move(*bytes));
      if (!existing) {
        throw std::runtime_error("the settings file " + path +
                                 " is not a property-list dictionary; `settings replace` rewrites it");
      }
      content = std::move(*existing);
    }
  }
  for (const auto& [key, value] : changes) content[key] = value;
  files.writeAtomically(kSettingsFilePath, linux_platform::binaryPlistBytes(content));
  std::cout << "settings written to " << path << "\n";
  announce(device, kSettingsChangedNotification);
}

void showSettings(const Device& device, bool json) {
  const std::string path = device.files().joined(kSettingsFilePath);
  nlohmann::json entries = nlohmann::json::object();
  if (std::optional<std::string> bytes = settingsFileBytes(device.files())) {
    std::optional<host::Dict> content = linux_platform::plistDictionaryFromBytes(std::move(*bytes));
    if (!content) throw std::runtime_error("the settings file " + path + " is not a property-list dictionary");
    for (const auto& [key, value] : *content) entries[host::toUtf8(key)] = settingsValueToJson(value);
  } else if (!json) {
    std::cout << "no settings file at " << path << "\n";
    return;
  }
  if (json) return printJson(entries);
  for (const auto& [key, value] : entries.items()) std::cout << key << " = " << value.dump() << "\n";
}

// --- blacklist and history ---------------------------------------------------

// The settings bundle's own logic does the work, as on the phone; what it
// announces goes out on the device's bus, connected only once a change is
// on disk.
class Announcer : public host::NotifyCenter {
 public:
  explicit Announcer(const Device& device) : device_(device) {}
  void post(const std::string& name) override { announce(device_, name); }
  void addObserver(const std::string&, Callback, host::SuspensionBehavior) override {
    throw std::logic_error("the companion's logic only posts");
  }

 private:
  const Device& device_;
};

// A change through it checks first that the root's bus address can be
// formed: a change that could never be announced is refused unwritten.
struct Companion {
  explicit Companion(const Device& device) : files(device.root()), announcer(device) {
    device.databaseFile();  // the same report as the listings when there is none
  }
  linux_platform::DeviceRootFileSystem files;
  Announcer announcer;
  companion::BlacklistEditor blacklist{files, announcer};
  companion::HistoryList history{files, announcer, localeDate};
};

void addToBlacklist(const Device& device, const std::string& number, const std::string& name) {
  device.checkBusAddress();
  Companion companion(device);
  companion.blacklist.add(number, name);
  std::cout << "added " << number << " (" << name << ") to the blacklist\n";
}

void removeFromBlacklist(const Device& device, const std::string& number) {
  device.checkBusAddress();
  Companion companion(device);
  const int removed = companion.blacklist.removeNumber(number);
  std::cout << "removed " << number << " from the blacklist (" << removed << " row"
            << (removed == 1 ? "" : "s") << ")\n";
}

// The history as the settings bundle's screen shows it: by number, newest
// first, dates in the user's locale.
// Printed as they are read: a history of any length in bounded memory.
void showHistory(const Device& device) {
  Companion companion(device);
  std::size_t rows = 0;
  companion.history.visitSections(
      [](const companion::HistorySection& section) { std::cout << printable(section.title) << "\n"; },
      [&rows](const companion::HistoryEntry& entry) {
        // A name or text with line breaks or terminal escapes stays on its line.
        std::cout << "  " << entry.id << "\t" << entry.date << "\t" << blockKindName(entry.kind)
                  << (entry.hasPicture ? "\tpicture\t" : "\t\t") << printable(entry.name) << ": "
                  << printable(entry.message) << "\n";
        ++rows;
      });
  std::cout << "History rows: " << rows << "\n";
}

void deleteHistoryRow(const Device& device, std::int64_t id, bool yes) {
  device.checkBusAddress();
  Companion companion(device);
  confirm("Delete history row " + std::to_string(id) + " and its picture?", yes);
  companion.history.remove(id);
  std::cout << "deleted history row " << id << "\n";
}

void clearHistory(const Device& device, bool yes) {
  device.checkBusAddress();
  Companion companion(device);
  confirm("Delete every history row and its picture?", yes);
  companion::ClearedHistory cleared = companion.history.clear();
  std::cout << "deleted " << cleared.rows << " history rows and " << cleared.pictures << " pictures\n";
}

void listTable(const Device& device, const std::string& table, const std::vector<std::string>& columns,
               bool json) {
  if (json) return printTableJson(std::cout, device.databaseFile(), table);
  nlohmann::json rows = readTable(device.databaseFile(), table);
  printTable(std::cout, rows, columns);
  std::cout << table << " rows: " << rows.size() << "\n";
}

// --- pictures and notifications ---------------------------------------------

// Saved pictures sit in one folder per number inside the data directory;
// files directly in it (the database and its journals) are not pictures.
void collectPictures(const linux_platform::DeviceRoot& files, const std::string& folder, int depth,
                     std::vector<std::pair<std::string, std::uintmax_t>>& pictures) {
  std::vector<std::string> names;
  try {
    names = files.list(folder);
  } catch (const linux_platform::DeviceFileError& e) {
    if (depth == 0 && e.error() == ENOENT) return;
    throw;
  }
  linux_platform::Fd dir = files.open(folder, O_RDONLY | O_DIRECTORY);
  for (const std::string& name : names) {
    struct stat st {};
    if (!dir || ::fstatat(dir.get(), name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) continue;
    const std::string path = folder + "/" + name;
    // Links are not followed, so whatever they name is not listed.
    if (S_ISDIR(st.st_mode)) collectPictures(files, path, depth + 1, pictures);
    // Another writer may have named a folder with any bytes.
    if (S_ISREG(st.st_mode) && depth >= 1) {
      pictures.emplace_back(host::repairUtf8(path.substr(1)), static_cast<std::uintmax_t>(st.st_size));
    }
  }
}

void listPictures(const Device& device, bool json) {
  std::vector<std::pair<std::string, std::uintmax_t>> pictures;
  collectPictures(device.files(), kDataDirectory, 0, pictures);
  std::sort(pictures.begin(), pictures.end());
  if (json) {
    nlohmann::json items = nlohmann::json::array();
    for (const auto& [path, size] : pictures) items.push_back({{"path", path}, {"size", size}});
    return printJson(items);
  }
  for (const auto& [path, size] : pictures) std::cout << size << "\t" << path << "\n";
  std::cout << "pictures: " << pictures.size() << "\n";
}

// One line per history change on stdout; the line that says the observer is
// in place goes to stderr, so stdout holds nothing but notifications.
int watch(const Device& device, std::optional<int> count, std::optional<double> timeoutSeconds) {
  std::unique_ptr<DBusNotifyCenter> center = device.connect();
  int seen = 0;
  center->addObserver(
      kNewMessagedAddedNotification,
      [&seen] { std::cout << "notification " << ++seen << ": " << kNewMessagedAddedNotification << std::endl; },
      host::SuspensionBehavior::kHold);
  std::cerr << "watching " << kNewMessagedAddedNotification << " on "
            << linux_platform::deviceBusAddress(device.root()) << std::endl;
  auto done = [&] { return count && seen >= *count; };
  if (timeoutSeconds) {
    center->runUntil(done, std::chrono::milliseconds(static_cast<long long>(*timeoutSeconds * 1000)));
  } else {
    while (!center->runUntil(done, std::chrono::hours(1))) {
    }
  }
  if (count && seen < *count) {
    std::cerr << "hushwallctl: " << seen << " of " << *count << " notifications within "
              << *timeoutSeconds << " s\n";
    return 1;
  }
  return 0;
}

}  // namespace
}  // namespace hushwall::tools

int main(int argc, char** argv) {
  using namespace hushwall;
  using namespace hushwall::tools;
  CLI::App app{"hushwallctl: the settings companion of a simulated device"};
  app.require_subcommand(1);
  app.fallthrough();  // --root may follow the command
  std::string root;
  app.add_option("--root", root, "the device root directory")->required();

  std::vector<std::string> words;
  std::string number, name = "Anonymous", notification;
  bool json = false, yes = false;
  // Counts and ids are kept as words and read by decimalNumber, never by the
  // option parser's own conversion, which takes "010" as octal.
  std::string historyId, count;
  std::optional<double> timeout;

  auto* settings = app.add_subcommand("settings", "the settings file");
  settings->require_subcommand(1);
  auto* settingsSet = settings->add_subcommand("set", "change keys, keep the others, and announce it");
  settingsSet->add_option("assignments", words, "KEY=VALUE ...")->required();
  auto* settingsReplace = settings->add_subcommand("replace", "write exactly these keys and announce it");
  settingsReplace->add_option("assignments", words, "KEY=VALUE ...")->required();
  auto* settingsShow = settings->add_subcommand("show", "print the settings file");
  settingsShow->add_flag("--json", json, "print a JSON object");

  auto* blacklist = app.add_subcommand("blacklist", "the Blacklist table");
  blacklist->require_subcommand(1);
  auto* blacklistAdd = blacklist->add_subcommand("add", "add a number and announce it");
  blacklistAdd->add_option("number", number, "the phone number, kept as written")->required();
  blacklistAdd->add_option("--name", name, "the name shown for it")->capture_default_str();
  auto* blacklistRemove = blacklist->add_subcommand("remove", "remove the entries equal to a number");
  blacklistRemove->add_option("number", number, "the entry, exactly as written")->required();
  auto* blacklistList = blacklist->add_subcommand("list", "print the blacklist");
  blacklistList->add_flag("--json", json, "print JSON rows");

  auto* icon = app.add_subcommand("icon", "the status-bar icon");
  icon->require_subcommand(1);
  auto* iconHide = icon->add_subcommand("hide", "ask SpringBoard to hide it");

  auto* history = app.add_subcommand("history", "print the block history, or change it");
  history->add_flag("--json", json, "print JSON rows");
  auto* historyDelete = history->add_subcommand("delete", "delete one row and its picture");
  historyDelete->add_option("id", historyId, "the row's id")
      ->required()
      ->check(CLI::Validator(rowIdError, "1.." + std::to_string(kMaxRowId)));
  historyDelete->add_flag("--yes", yes, "do not ask (needed when stdin is not a terminal)");
  auto* historyClear = history->add_subcommand("clear", "delete every row and saved picture");
  historyClear->add_flag("--yes", yes, "do not ask (needed when stdin is not a terminal)");
  auto* pictures = app.add_subcommand("pictures", "list the saved pictures");
  pictures->add_flag("--json", json, "print JSON");

  auto* watchCmd = app.add_subcommand("watch", "print a line for each history change");
  watchCmd->add_option("--count", count, "exit after this many")
      ->check(CLI::Validator(watchCountError, "0.." + std::to_string(kMaxWatchCount)));
  watchCmd->add_option("--timeout", timeout, "exit after this many seconds")
      ->check(CLI::Validator(watchTimeoutError, "SECONDS"));

  auto* post = app.add_subcommand("post", "post any notification");
  post->add_option("name", notification, "the notification name")->required();

  // No database of the device is opened through a link planted in it.
  linux_platform::refuseLinkedDatabases();
  try {
    requireUtf8Arguments(argc, argv);
  } catch (const std::invalid_argument& e) {
    std::cerr << "hushwallctl: " << e.what() << "\n";
    return 2;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? 0 : 2;
  }

  try {
    Device device(root);
    if (*settingsSet) writeSettings(device, words, true);
    if (*settingsReplace) writeSettings(device, words, false);
    if (*settingsShow) showSettings(device, json);
    if (*blacklistAdd) addToBlacklist(device, number, name);
    if (*blacklistRemove) removeFromBlacklist(device, number);
    if (*blacklistList) listTable(device, "Blacklist", {"phoneNumber", "name"}, json);
    if (*iconHide || *post) {
      std::string what = *iconHide ? kRemoveStatusBarIconNotification : notification;
      linux_platform::checkNotificationName(what);
      device.post(what);
      std::cout << "posted " << what << "\n";
    }
    if (*historyDelete) {
      deleteHistoryRow(device, *decimalNumber(historyId, 1, kMaxRowId), yes);
    } else if (*historyClear) {
      clearHistory(device, yes);
    } else if (*history && json) {
      listTable(device, "History", historyColumns(), json);
    } else if (*history) {
      showHistory(device);
    }
    if (*pictures) listPictures(device, json);
    if (*watchCmd) {
      std::optional<int> awaited;
      if (!count.empty()) awaited = static_cast<int>(*decimalNumber(count, 0, kMaxWatchCount));
      return watch(device, awaited, timeout);
    }
    return 0;
  } catch (const std::invalid_argument& e) {
    std::cerr << "hushwallctl: " << e.what() << "\n";
    return 2;
  } catch (const BusUnavailable& e) {
    std::cerr << "hushwallctl: " << e.what() << "\n";
    return 3;
  } catch (const std::exception& e) {
    std::cerr << "hushwallctl: " << e.what() << "\n";
    return 1;
  }
}
