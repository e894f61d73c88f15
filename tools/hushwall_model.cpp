// hushwall-model: the model of Hushwall at work on a simulated device root.
//
// Each command loads the settings and the blacklist the way a process that
// loaded the library does, and then asks the model object one kind of
// question. `demo` walks through all of them on a fresh device.
#include <CLI/CLI.hpp>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>

#include "companion/blacklist_editor.h"
#include "model/hushwall.h"
#include "model/paths.h"
#include "platform/linux/device_root.h"
#include "platform/linux/plist_file.h"
#include "platform/linux/vcard_address_book.h"
#include "platform/linux/sqlite_no_links.h"
#include "startup/blacklist.h"
#include "startup/notification_names.h"
#include "startup/settings.h"
#include "tools/command_line_checks.h"
#include "tools/device_root.h"
#include "tools/device_session.h"
#include "tools/history_table.h"

namespace hushwall::tools {
namespace {

namespace fs = std::filesystem;
using host::T;
using host::toUtf8;

std::string show(const host::OptText& text) { return text ? "'" + toUtf8(*text) + "'" : "(absent)"; }

// Start-up's loading half: the observers every process adds, then the first
// load of the settings and the blacklist.
void loadLikeStartUp(DeviceSession& session) {
  auto& center = *host::env().notifyCenter;
  center.addObserver(kSettingsChangedNotification, SettingsChanged, host::SuspensionBehavior::kHold);
  center.addObserver(kContactsChangedNotification, ContactsChanged, host::SuspensionBehavior::kHold);
  SettingsChanged();
  ContactsChanged();
  (void)session;
}

void printFlags() {
  std::cout << "  Enabled=" << settings_Enabled << " SaveHistory=" << settings_SaveHistory
            << " ShowStatusbarIcon=" << settings_ShowStatusBarIcon << " Vibrate=" << settings_Vibrate
            << " ContactsOnly=" << settings_ContactsOnly << " DeleteMessages=" << settings_DeleteMessages
            << " ActionButton=" << settings_ActionButton << "\n";
}

void printBlacklist() {
  std::cout << "  blacklistNumbers = [";
  const char* sep = "";
  for (const auto& n : *blacklistNumbers) std::cout << sep << "'" << toUtf8(n) << "'", sep = ", ";
  std::cout << "]\n";
}

void judge(const std::vector<std::string>& addresses) {
  Hushwall* model = Hushwall::sharedInstance();
  for (const auto& address : addresses) {
    host::OptText number = model->getPhoneNumber(T(address));
    bool listed = model->existPhoneNumber(number);
    bool blocked = model->phoneNumberBlacklisted(number);
    std::cout << "  " << std::left << std::setw(30) << address << " number " << std::setw(16)
              << show(number) << (blocked ? " BLOCKED" : " passes")
              << (blocked && !listed ? " (not a contact)" : "") << "\n";
  }
}

void parse(const std::vector<std::string>& texts) {
  Hushwall* model = Hushwall::sharedInstance();
  for (const auto& text : texts) {
    std::string message;
    try {
      message = show(model->getMessage(T(text)));
    } catch (const host::RangeException&) {
      // The platform raises here and the hooks do not catch it: the host
      // process would crash on such a notification.
      message = "range failure (the colon is the last character)";
    }
    std::cout << "  " << std::left << std::setw(28) << ("'" + text + "'") << " name "
              << std::setw(14) << show(model->getName(T(text))) << " message " << message << "\n";
  }
}

class DemoBulletin : public host::Bulletin {
 public:
  DemoBulletin(std::string section, host::Value context, std::string message)
      : section_(T(section)), context_(std::move(context)), message_(T(message)) {}
  host::OptText sectionID() const override { return section_; }
  host::Value context() const override { return context_; }
  host::OptText message() const override { return message_; }

 private:
  host::Text section_;
  host::Value context_;
  host::Text message_;
};

host::Value dict(std::initializer_list<std::pair<const char*, host::Value>> entries) {
  host::Dict d;
  for (const auto& [k, v] : entries) d[T(k)] = v;
  return host::Value::dictionary(std::move(d));
}
host::Value str(const char* s) { return host::Value::string(T(s)); }

void listHistory(const std::string& root, bool json) {
  nlohmann::json rows = readTable(linux_platform::DeviceRoot(root).fileForSqlite(toUtf8(databasePath())), "History");
  if (json) {
    std::cout << rows.dump(2) << "\n";
    return;
  }
  printTable(std::cout, rows, historyColumns());
  std::cout << "History rows: " << rows.size() << "\n";
}

int demo(const std::string& requestedRoot, const std::string& templateDb) {
  std::string root = requestedRoot;
  bool temporary = root.empty();
  if (temporary) {
    std::string pattern = "/tmp/hushwall-demo-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a device root");
    root = pattern;
  } else {
    // The demo writes settings, contacts and rows of its own: a device that
    // holds anything already would be changed beyond repair.
    root = newDeviceRoot(root, false);
  }
  seedDevice(root, templateDb);
  std::cout << "== A device at " << root << "\n"
            << "  template database installed in the settings bundle and the data directory\n";

  // What the settings bundle writes before anything runs.
  const linux_platform::DeviceRoot files(root);
  files.makeDirectories(fs::path(kSettingsFilePath).parent_path().string());
  files.makeDirectories(fs::path(linux_platform::kContactsVCardPath).parent_path().string());
  files.writeAtomically(kSettingsFilePath,
                        linux_platform::binaryPlistBytes({{T("Enabled"), host::Value::boolean(true)},
                                                          {T("ShowStatusbarIcon"), host::Value::boolean(true)},
                                                          {T("Vibrate"), host::Value::boolean(true)}}));
  files.writeAtomically(linux_platform::kContactsVCardPath,
                        linux_platform::contactsVCardText({"+4930999000", "+34 612 345 678"}));

  {
    DeviceSession session(root);
    int historyPosts = 0;
    host::env().notifyCenter->addObserver(kNewMessagedAddedNotification, [&] { ++historyPosts; },
                                          host::SuspensionBehavior::kHold);
    // What the settings bundle wrote before anything ran.
    companion::BlacklistEditor(*host::env().fileSystem, *host::env().notifyCenter)
        .add("4917012345", "Mallory");
    loadLikeStartUp(session);
    std::cout << "  device bus " << linux_platform::deviceBusAddress(session.root()) << "\n";

    std::cout << "\n== Settings and blacklist as loaded at start-up\n";
    printFlags();
    printBlacklist();

    std::cout << "\n== The settings bundle adds a number and announces it\n";
    companion::BlacklistEditor(*host::env().fileSystem, *host::env().notifyCenter)
        .add("+44 20", "Spam");
    session.runLoop();
    printBlacklist();
    std::cout << "  note: '+44 20' is kept as written, so it covers only numbers that contain it "
                 "literally\n";

    std::cout << "\n== Senders judged (an entry covers every number that contains it)\n";
    judge({"4917012345@s.whatsapp.net", "+4917012345@s.whatsapp.net", " 4917012345 @grp",
           "4930999000@s.whatsapp.net", "+44 20 7946 0000@s.whatsapp.net", "34612345678@s.whatsapp.net"});

    std::cout << "\n== ContactsOnly switched on: numbers no contact holds are blocked too\n";
    files.writeAtomically(kSettingsFilePath,
                          linux_platform::binaryPlistBytes({{T("Enabled"), host::Value::boolean(true)},
                                                            {T("ContactsOnly"), host::Value::boolean(true)}}));
    host::env().notifyCenter->post(kSettingsChangedNotification);
    session.runLoop();
    printFlags();
    judge({"4930999000@s.whatsapp.net", "34612345678@s.whatsapp.net", "4955555555@s.whatsapp.net"});

    std::cout << "\n== Notification texts read\n";
    parse({"Alice: See you at 5", "Alice @ Team: Hi: all", "Alice:Hello", "Alice sent you a photo",
           "Photo", "Alice:"});

    std::cout << "\n== SpringBoard bulletins judged\n";
    Hushwall* model = Hushwall::sharedInstance();
    const char* wa = "net.whatsapp.WhatsApp";
    struct Case { const char* label; DemoBulletin bulletin; };
    Case cases[] = {
        {"local, blacklisted jid", {wa, dict({{"notificationType", str("AppNotificationLocal")},
                                              {"userInfo", dict({{"jid", str("4917012345@s.whatsapp.net")}})}}),
                                    "Mallory: buy now"}},
        {"remote, a contact", {wa, dict({{"notificationType", str("AppNotificationRemote")},
                                                {"userInfo", dict({{"aps", dict({{"alert", dict({{"body", str("Bob: hi")}})},
                                                                                 {"u", str("4930999000")}})}})}}),
                                      "Bob: hi"}},
        {"remote, no body", {wa, dict({{"notificationType", str("AppNotificationRemote")},
                                             {"userInfo", dict({{"aps", dict({{"u", str("4917012345")}})}})}}),
                                   ""}},
        {"remote, 'u' with a domain", {wa, dict({{"notificationType", str("AppNotificationRemote")},
                                                 {"userInfo", dict({{"aps", dict({{"alert", dict({{"body", str("Bob: hi")}})},
                                                                                  {"u", str("4930999000@s.whatsapp.net")}})}})}}),
                                       "Bob: hi"}},
        {"another app", {"com.apple.MobileSMS", dict({{"notificationType", str("AppNotificationLocal")}}), "x"}},
    };
    for (const auto& c : cases) {
      std::cout << "  " << std::left << std::setw(28) << c.label
                << (model->isBulletinBlocked(c.bulletin) ? "BLOCKED" : "shown") << "\n";
    }

    std::cout << "\n== History of blocked messages\n";
    const double t = 1400000050.0;
    session.device().clock().setFixedTime(t);
    host::Text picture = model->saveImageOnDiskWithData(host::Bytes{0x89, 'P', 'N', 'G'}, T("4917012345"));
    std::cout << "  picture saved at " << toUtf8(picture) << "\n";
    host::Array records;
    records.push_back(dict({{"phoneNumber", str("4917012345")}, {"name", str("Mallory")},
                            {"message", str("buy now")}, {"timestamp", host::Value::real(static_cast<float>(t))},
                            {"blockType:kBLOCK_TYPE_APP", host::Value::integer(1)},
                            {"isMine", host::Value::boolean(false)}, {"mediaType", host::Value::integer(0)},
                            {"mediaFileName", str("")}, {"mediaURL", str("")}}));
    records.push_back(dict({{"phoneNumber", str("4917012345")}, {"name", str("Mallory")},
                            {"message", str("")}, {"timestamp", host::Value::real(static_cast<float>(t))},
                            {"blockType:kBLOCK_TYPE_APP", host::Value::integer(1)},
                            {"isMine", host::Value::boolean(false)}, {"mediaType", host::Value::integer(1)},
                            {"mediaFileName", host::Value::string(picture)},
                            {"mediaURL", str("https://mmg.example/p1")}}));
    model->addHistoryWithArray(records);
    model->addHistoryWithPhoneNumber(T("4917012345"), T("Me"), T("stop writing"), t + 5, kBLOCK_TYPE_APP, true);
    model->addHistoryWithPhoneNumber(T("4917012345"), T("Mallory"), T("again"), t + 10,
                                     kBLOCK_TYPE_NOTIFICATION, false);
    std::cout << "  'buy now' already recorded near t+60? "
              << (model->existMessage(T("buy now"), T("4917012345"), t + 60) ? "yes" : "no")
              << "; near t+600? " << (model->existMessage(T("buy now"), T("4917012345"), t + 600) ? "yes" : "no")
              << "\n";
    session.runLoop();
    std::cout << "  newMessagedAdded received " << historyPosts << " times\n\n";
    listHistory(session.root(), false);
    std::cout << "  (batch rows: date rounded through a float, block type 0 under the batch's own key)\n";
  }
  if (temporary) fs::remove_all(root);
  return 0;
}

}  // namespace
}  // namespace hushwall::tools

int main(int argc, char** argv) {
  using namespace hushwall;
  using namespace hushwall::tools;
  CLI::App app{"hushwall-model: Hushwall's model on a simulated device root"};
  app.require_subcommand(1);
  std::string root;
  std::string templateDb = HUSHWALL_TEMPLATE_DB;

  auto* demoCmd = app.add_subcommand("demo", "walk through the model on a fresh device");
  demoCmd->add_option("--root", root, "keep the device in this directory instead of a temporary one");

  auto* initCmd = app.add_subcommand("init", "lay out a device root: template database in place");
  initCmd->add_option("--root", root, "device root directory")->required();

  auto* settingsCmd = app.add_subcommand("settings", "load the settings file and print the flags");
  settingsCmd->add_option("--root", root, "device root directory")->required()->check(CLI::ExistingDirectory);

  std::vector<std::string> items;
  auto* judgeCmd = app.add_subcommand("judge", "phone number of each address and whether it is blocked");
  judgeCmd->add_option("--root", root, "device root directory")->required()->check(CLI::ExistingDirectory);
  judgeCmd->add_option("address", items, "messenger addresses (JIDs)")->required();

  auto* parseCmd = app.add_subcommand("parse", "name and message of each notification text");
  parseCmd->add_option("text", items, "notification texts")->required();

  bool json = false;
  auto* historyCmd = app.add_subcommand("history", "list the block history");
  historyCmd->add_option("--root", root, "device root directory")->required()->check(CLI::ExistingDirectory);
  historyCmd->add_flag("--json", json, "print JSON rows");

  // No database of the device is opened through a link planted in it.
  linux_platform::refuseLinkedDatabases();
  try {
    requireUtf8Arguments(argc, argv);
  } catch (const std::invalid_argument& e) {
    std::cerr << "hushwall-model: " << e.what() << "\n";
    return 2;
  }
  CLI11_PARSE(app, argc, argv);
  try {
    if (*demoCmd) return demo(root, templateDb);
    if (*initCmd) {
      // A device already laid out is seeded again, keeping its files.
      root = newDeviceRoot(root, true);
      seedDevice(root, templateDb);
      std::cout << "device root " << root << " ready\n";
      return 0;
    }
    if (*parseCmd) {
      // Reading texts touches no platform service: no device needed.
      parse(items);
      return 0;
    }
    DeviceSession session(root);
    loadLikeStartUp(session);
    if (*settingsCmd) printFlags();
    if (*judgeCmd) {
      printBlacklist();
      judge(items);
    }
    if (*historyCmd) listHistory(session.root(), json);
    return 0;
  } catch (const std::exception& e) {
    std::cerr << "hushwall-model: " << e.what() << "\n";
    return 1;
  }
}
