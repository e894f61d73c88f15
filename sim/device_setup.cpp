#include "sim/device_setup.h"

#include <fcntl.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "model/paths.h"
#include "platform/linux/device_bundles.h"
#include "platform/linux/device_root.h"
#include "platform/linux/file_lock.h"
#include "platform/linux/plist_file.h"
#include "platform/linux/vcard_address_book.h"
#include "sim/json_values.h"
#include "startup/settings.h"
#include "tools/device_root.h"

namespace hushwall::sim {
namespace {

namespace fs = std::filesystem;

// Every file is made through the root, never through a link planted in it.
std::string inRoot(const linux_platform::DeviceRoot& files, const std::string& devicePath) {
  files.makeDirectories(fs::path(devicePath).parent_path().string());
  return files.fileForSqlite(devicePath);
}

void copyTemplate(const linux_platform::DeviceRoot& files, const std::string& bytes,
                  const std::string& devicePath) {
  files.makeDirectories(fs::path(devicePath).parent_path().string());
  if (!files.createExclusive(devicePath, bytes)) {
    throw std::runtime_error(files.joined(devicePath) + " exists already");
  }
}

// WhatsApp's own message database, with the one table Hushwall reads.
void writeChatStorage(const std::string& root, const std::vector<ChatMessage>& rows) {
  const std::string path = inRoot(
      linux_platform::DeviceRoot(root), host::toUtf8(linux_platform::documentsDirectoryOf(host::T("net.whatsapp.WhatsApp"))) +
                "/ChatStorage.sqlite");
  sqlite3* raw = nullptr;
  int rc = sqlite3_open(path.c_str(), &raw);
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> db(raw, sqlite3_close);
  sqlite3_stmt* insert = nullptr;
  if (rc != SQLITE_OK ||
      sqlite3_exec(db.get(), "CREATE TABLE ZWAMESSAGE (Z_PK INTEGER PRIMARY KEY, ZTOJID TEXT, ZFROMJID TEXT)",
                   nullptr, nullptr, nullptr) != SQLITE_OK ||
      sqlite3_prepare_v2(db.get(), "INSERT INTO ZWAMESSAGE (ZTOJID, ZFROMJID) VALUES (?, ?)", -1,
                         &insert, nullptr) != SQLITE_OK) {
    throw std::runtime_error("cannot write the messenger's database " + path + ": " +
                             sqlite3_errmsg(db.get()));
  }
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(insert, sqlite3_finalize);
  for (const ChatMessage& row : rows) {
    int column = 0;
    for (const auto& jid : {row.toJID, row.fromJID}) {
      ++column;
      if (jid) sqlite3_bind_text(insert, column, jid->c_str(), -1, SQLITE_TRANSIENT);
      else sqlite3_bind_null(insert, column);
    }
    if (sqlite3_step(insert) != SQLITE_DONE) {
      throw std::runtime_error("cannot write the messenger's database " + path);
    }
    sqlite3_reset(insert);
  }
}

// The scenario's Blacklist rows, stored as written and in one transaction:
// a hundred thousand rows take seconds, where a commit per row would take
// minutes.
void seedBlacklist(const std::string& path, const std::vector<BlacklistEntry>& rows) {
  sqlite3* raw = nullptr;
  int rc = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> db(raw, sqlite3_close);
  auto failed = [&] {
    return std::runtime_error("cannot seed the blacklist in " + path + ": " + sqlite3_errmsg(db.get()));
  };
  sqlite3_stmt* insert = nullptr;
  if (rc != SQLITE_OK || sqlite3_exec(db.get(), "BEGIN", nullptr, nullptr, nullptr) != SQLITE_OK ||
      sqlite3_prepare_v2(db.get(), "INSERT INTO Blacklist (name, phoneNumber) VALUES (?, ?)", -1, &insert,
                         nullptr) != SQLITE_OK) {
    throw failed();
  }
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(insert, sqlite3_finalize);
  for (const BlacklistEntry& row : rows) {
    sqlite3_bind_text(insert, 1, row.name.data(), static_cast<int>(row.name.size()), SQLITE_TRANSIENT);
    sqlite3_bind_text(insert, 2, row.phoneNumber.data(), static_cast<int>(row.phoneNumber.size()),
                      SQLITE_TRANSIENT);
    if (sqlite3_step(insert) != SQLITE_DONE) throw failed();
    sqlite3_reset(insert);
  }
  if (sqlite3_exec(db.get(), "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) throw failed();
}

}  // namespace

std::string databaseFile(const std::string& root) {
  return root + kDataDirectory + kDatabaseComponent;
}

void prepareDevice(const std::string& root, const Scenario& scenario,
                   const std::string& templateDatabase) {
  if (!fs::is_regular_file(templateDatabase)) {
    throw std::runtime_error("the template database " + templateDatabase + " is missing");
  }
  // First, so that the companion tools recognise the root as a device's even
  // when the run stops half way.
  tools::markDeviceRoot(root);
  const linux_platform::DeviceRoot files(root);
  const std::string bytes =
      linux_platform::readRegularFileAt(AT_FDCWD, templateDatabase, linux_platform::kMaxSettingsFileBytes);
  copyTemplate(files, bytes, std::string(kSettingsBundlePath) + kDatabaseComponent);
  if (scenario.settings) writeSettingsFile(root, *scenario.settings);
  if (scenario.contacts) {
    files.makeDirectories(fs::path(linux_platform::kContactsVCardPath).parent_path().string());
    files.writeAtomically(linux_platform::kContactsVCardPath,
                          linux_platform::contactsVCardText(*scenario.contacts));
  }
  if (scenario.chatStorage) writeChatStorage(root, *scenario.chatStorage);
  if (!scenario.blacklist.empty()) {
    const std::string database = std::string(kDataDirectory) + kDatabaseComponent;
    copyTemplate(files, bytes, database);
    seedBlacklist(inRoot(files, database), scenario.blacklist);
  }
}

std::set<std::string> initialChats(const Scenario& scenario) {
  std::set<std::string> chats;
  if (!scenario.chatStorage) return chats;
  for (const ChatMessage& row : *scenario.chatStorage) {
    for (const auto& jid : {row.toJID, row.fromJID}) {
      if (jid) chats.insert(*jid);
    }
  }
  return chats;
}

void writeSettingsFile(const std::string& root, const nlohmann::json& values) {
  const host::Value settings = valueFromJson(values);
  const linux_platform::DeviceRoot files(root);
  files.makeDirectories(fs::path(kSettingsFilePath).parent_path().string());
  // hushwallctl may be changing the file at the same time; see its settings.
  linux_platform::FileLock lock(files, kSettingsFilePath);
  files.writeAtomically(kSettingsFilePath, linux_platform::binaryPlistBytes(*settings.dictionary()));
}

}  // namespace hushwall::sim
