#include "bench/whatsapp_under_test.h"

#include <filesystem>
#include <stdexcept>

#include "platform/linux/object_runtime.h"
#include "testing/database_rows.h"

namespace hushwall::bench {
namespace {
namespace fs = std::filesystem;

constexpr char kSettingsChanged[] = "com.Corvanta.HushwallSettings.settingsChanged";
constexpr char kContactsChanged[] = "com.Corvanta.HushwallSettings.contactsChanged";

// Points the device's HSWL.db at `target`, replacing the link in one step so
// that the library never finds the file missing.
void pointAt(const std::string& link, const std::string& target) {
  const std::string fresh = link + ".new";
  fs::remove(fresh);
  fs::create_symlink(target, fresh);
  fs::rename(fresh, link);
}

void writeBlacklist(const std::string& file, const std::vector<std::string>& numbers) {
  std::string sql = "BEGIN; DELETE FROM Blacklist;";
  for (const std::string& number : numbers) {
    sql += "INSERT INTO Blacklist (name, phoneNumber) VALUES ('Blocked', '" + number + "');";
  }
  sql += "COMMIT;";
  testing::execSql(file, sql);
}

}  // namespace

WhatsAppUnderTest::WhatsAppUnderTest(const std::string& libraryPath)
    : onDisk_(HUSHWALL_TEMPLATE_DB, device_.native("/bench/disk/HSWL.db"), Storage::kDisk),
      inMemory_(HUSHWALL_TEMPLATE_DB, device_.native("/bench/memory/HSWL.db"), Storage::kMemory),
      app_(device_.root(), host::T("net.whatsapp.WhatsApp"), simhost::AppClasses::kWhatsApp) {
  fs::create_directories(fs::path(databasePath()).parent_path());
  pointAt(databasePath(), onDisk_.file());
  device_.writeFlags(flags_);

  auto* connectionClass = linux_platform::ObjectRuntime::asClass(
      app_.runtime().getClass("XMPPConnection"));
  hostDelivery_ = connectionClass->lookup("processIncomingMessageStanzas:")->imp;

  app_.loadLibrary(libraryPath);
  if (connectionClass->lookup("processIncomingMessageStanzas:")->imp == hostDelivery_) {
    throw std::runtime_error("the library did not hook processIncomingMessageStanzas:");
  }
  connection_ = app_.make("XMPPConnection");
  delegate_ = app_.make("WhatsAppAppDelegate");
}

void WhatsAppUnderTest::useFlags(const Flags& flags) {
  if (flags == flags_) return;
  device_.writeFlags(flags);
  if (!device_.announce(app_, kSettingsChanged)) {
    throw std::runtime_error("the app did not hear that the settings changed");
  }
  flags_ = flags;
}

void WhatsAppUnderTest::useBlacklist(const std::vector<std::string>& numbers) {
  if (numbers == blacklist_) return;
  writeBlacklist(onDisk_.file(), numbers);
  writeBlacklist(inMemory_.file(), numbers);
  if (!device_.announce(app_, kContactsChanged)) {
    throw std::runtime_error("the app did not hear that the blacklist changed");
  }
  blacklist_ = numbers;
}

void WhatsAppUnderTest::useStorage(Storage storage) {
  if (storage == storage_) return;
  pointAt(databasePath(), storage == Storage::kDisk ? onDisk_.file() : inMemory_.file());
  storage_ = storage;
}

}  // namespace hushwall::bench
