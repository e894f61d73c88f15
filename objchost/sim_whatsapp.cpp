// The scenario's WhatsApp side in the simulated app (libHushwall.so over
// the simulated host runtime).
#include <cstddef>
#include <string>

#include "objchost/two_hosts.h"
#include "simhost/host_log.h"
#include "simhost/simulated_app.h"
#include "simhost/whatsapp_classes.h"
#include "testing/child_process.h"

namespace hushwall::objchost {
namespace {

using host::Value;
using simhost::hostLog;

class SimWhatsApp : public WhatsAppDriver {
 public:
  SimWhatsApp(simhost::SimulatedApp& app, testing::NotificationCounter& posted)
      : app_(app), posted_(posted) {
    connection_ = app.make("XMPPConnection");
    chatList_ = app.make("ChatListViewController");
    delegate_ = app.make("WhatsAppAppDelegate");
  }

  void deliver(const std::vector<StanzaInput>& batch) override {
    host::Array stanzas;
    for (const StanzaInput& s : batch) {
      std::optional<simhost::Media> media;
      if (s.media) media = simhost::Media{s.media->type, s.media->url, s.media->bytes};
      stanzas.push_back(simhost::makeStanza(app_.runtime(), s.id, s.fromJID, s.text, s.nickname,
                                            s.timestamp, media));
    }
    app_.send(connection_, "processIncomingMessageStanzas:", {Value::array(stanzas)});
    logNew();
  }

  void send(const OutgoingInput& m) override {
    app_.send(connection_, "sendMessage:",
              {simhost::makeOutgoingMessage(app_.runtime(), m.id, m.toJID, m.text, m.messageType,
                                            m.date)});
    logNew();
  }

  void openOptions(const OptString& jid, const OptString& name) override {
    app_.send(chatList_, "chatSessionCellShowMoreOptions:",
              {simhost::makeCell(app_.runtime(), jid, name)});
    logNew();
  }

  void actionSheet(const std::string& title) override {
    app_.sendToClass("WABlockBasedActionSheet", "actionSheetWithTitle:",
                     {Value::string(host::T(title))});
    const auto& sheet = hostLog().sheets.back();
    std::vector<std::string> buttons;
    for (const auto& button : sheet.buttons) buttons.push_back(button.first);
    log.push_back("sheet " + sheet.title.value_or("(nil)") + " " + joined(buttons));
  }

  void tapSheetButton(const std::string& title) override {
    simhost::tapButton(title);
    const host::AlertView& alert = app_.device().alerts().shown().back();
    std::vector<std::string> buttons{host::toUtf8(alert.cancelButtonTitle)};
    for (const auto& other : alert.otherButtonTitles) buttons.push_back(host::toUtf8(other));
    log.push_back("alert " + host::toUtf8(alert.title) + " | " + host::toUtf8(alert.message) +
                  " | " + joined(buttons) + " | " + std::to_string(alert.tag));
  }

  void answerAlert(int index) override { app_.device().alerts().answer(index); }

  void holdChats(const std::vector<std::string>& jids) override {
    hostLog().chats.insert(jids.begin(), jids.end());
  }

  void background() override {
    app_.send(delegate_, "applicationDidEnterBackground:", {Value()});
    WhatsAppLogCursor::logChats(hostLog(), log);
  }

  void terminate() override {
    app_.send(delegate_, "applicationWillTerminate:", {Value()});
    WhatsAppLogCursor::logChats(hostLog(), log);
  }

  void settle() override {
    posted_.settle();
    log.push_back("vibrations " + std::to_string(app_.device().systemSounds().vibrations()));
    for (const std::string& name : kPostedNames) {
      log.push_back("posted " + name + " " + std::to_string(posted_.count(name)));
    }
  }

 private:
  void logNew() { cursor_.logNew(hostLog(), log); }

  simhost::SimulatedApp& app_;
  testing::NotificationCounter& posted_;
  Value connection_, chatList_, delegate_;
  WhatsAppLogCursor cursor_;
};

}  // namespace

Log runSimulatedWhatsApp(const testing::TestDevice& device, const WhatsAppScript& script) {
  testing::runInChildProcess([&] {
    simhost::SimulatedApp app(device.root(), host::T("net.whatsapp.WhatsApp"),
                              simhost::AppClasses::kWhatsApp);
    testing::NotificationCounter posted(app, kPostedNames);
    app.loadLibrary(HUSHWALL_LIBRARY_PATH);
    SimWhatsApp driver(app, posted);
    script(driver);
    driver.settle();
    writeLog(device, "simulated", driver.log);
  });
  return readLog(device, "simulated");
}

}  // namespace hushwall::objchost
