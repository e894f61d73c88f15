#include "sim/app_steps.h"

#include <algorithm>
#include <optional>

#include "sim/json_values.h"
#include "sim/library_peek.h"
#include "simhost/host_log.h"
#include "simhost/object_access.h"
#include "simhost/springboard_classes.h"
#include "simhost/whatsapp_classes.h"

namespace hushwall::sim {
namespace {

using host::Value;
using nlohmann::json;
using simhost::OptString;

constexpr char kMessenger[] = "net.whatsapp.WhatsApp";

OptString text(const json& object, const char* key) {
  auto found = object.find(key);
  if (found == object.end() || !found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

std::optional<double> number(const json& object, const char* key) {
  auto found = object.find(key);
  if (found == object.end() || !found->is_number()) return std::nullopt;
  return found->get<double>();
}

// A key the scenario left out is a property the object lacks.
void dropAbsent(const Value& object, const json& given, std::initializer_list<const char*> keys) {
  for (const char* key : keys) {
    if (!given.contains(key)) simhost::setProperty(object, key, Value());
  }
}

}  // namespace

AppSteps::AppSteps(simhost::SimulatedApp& app, AppObserver& observer, Kind kind,
                   std::string libraryPath)
    : app_(app), observer_(observer), kind_(kind), libraryPath_(std::move(libraryPath)) {
  application_ = app_.make("NSObject");
  if (kind_ == Kind::kWhatsApp) {
    connection_ = app_.make("XMPPConnection");
    chatList_ = app_.make("ChatListViewController");
    delegate_ = app_.make("WhatsAppAppDelegate");
  } else {
    banner_ = app_.make("SBBulletinBannerController");
    lockScreen_ = app_.make("SBLockScreenNotificationListController");
    notificationCenter_ = app_.make("SBBulletinObserverViewController");
    application_ = simhost::addApplication(app_.runtime(), kMessenger, Value());
  }
}

void AppSteps::play(const json& step) {
  const std::string kind = step.at("do").get<std::string>();
  const bool whatsApp = kind_ == Kind::kWhatsApp;
  if (whatsApp && kind == "incoming") return incoming(step);
  if (whatsApp && kind == "send") return send(step);
  if (whatsApp && kind == "chatOptions") return chatOptions(step);
  if (whatsApp && kind == "actionSheet") {
    app_.sendToClass("WABlockBasedActionSheet", "actionSheetWithTitle:",
                     {simhost::stringValue(text(step, "title"))});
    return;
  }
  if (whatsApp && kind == "tap") return tap(step.at("button").get<std::string>());
  if (whatsApp && kind == "answer") return answer(step.at("index").get<std::int64_t>());
  if (whatsApp && kind == "background") {
    app_.send(delegate_, "applicationDidEnterBackground:", {application_});
    return;
  }
  if (whatsApp && kind == "terminate") {
    app_.send(delegate_, "applicationWillTerminate:", {application_});
    return;
  }
  if (!whatsApp && kind == "bulletin") return bulletin(step);
  if (!whatsApp && kind == "badge") return badge(step);
  throw StepError("\"" + kind + "\" is no step for this app");
}

void AppSteps::incoming(const json& step) {
  host::Array stanzas;
  for (const json& given : step.at("stanzas")) {
    const bool hasMedia = given.value("hasMedia", false);
    std::optional<simhost::Media> media;
    if (hasMedia) {
      media = simhost::Media{given.value("mediaType", std::int64_t{0}), text(given, "mediaURL"), {}};
      if (auto bytes = text(given, "media")) media->bytes = decodeBase64(*bytes).value_or(host::Bytes{});
    }
    Value stanza = simhost::makeStanza(app_.runtime(), given.value("id", ""), text(given, "fromJID"),
                                       text(given, "text"), text(given, "nickname"),
                                       number(given, "timestamp"), media);
    dropAbsent(stanza, given, {"hasMedia"});
    if (hasMedia) dropAbsent(stanza, given, {"mediaType", "media"});
    stanzas.push_back(stanza);
  }
  app_.send(connection_, "processIncomingMessageStanzas:", {Value::array(std::move(stanzas))});
}

void AppSteps::send(const json& step) {
  const json& given = step.at("message");
  Value message = simhost::makeOutgoingMessage(
      app_.runtime(), given.value("id", ""), text(given, "toJID"), text(given, "text"),
      given.value("messageType", std::int64_t{0}), number(given, "messageDate").value_or(0));
  dropAbsent(message, given, {"messageType", "messageDate"});
  app_.send(connection_, "sendMessage:", {message});
}

void AppSteps::chatOptions(const json& step) {
  const json& cell = step.at("cell");
  app_.send(chatList_, "chatSessionCellShowMoreOptions:",
            {simhost::makeCell(app_.runtime(), text(cell, "jid"), text(cell, "name"))});
}

void AppSteps::tap(const std::string& title) {
  const auto& sheets = simhost::hostLog().sheets;
  if (sheets.empty()) throw StepError("no action sheet has been opened");
  std::string titles;
  for (const auto& button : sheets.back().buttons) {
    if (button.first == title) return simhost::tapButton(title);
    titles += (titles.empty() ? "" : ", ") + ("\"" + button.first + "\"");
  }
  throw StepError("the last action sheet has no button \"" + title + "\" (it has " +
                  (titles.empty() ? "none" : titles) + ")");
}

void AppSteps::answer(std::int64_t index) {
  auto& alerts = app_.device().alerts();
  if (!alerts.onScreen()) throw StepError("no alert is on screen");
  const auto buttons = static_cast<std::int64_t>(alerts.shown().back().otherButtonTitles.size() + 1);
  if (index < 0 || index >= buttons) {
    throw StepError("the alert on screen has no button " + std::to_string(index) + " (it has " +
                    std::to_string(buttons) + ")");
  }
  alerts.answer(static_cast<std::intptr_t>(index));
}

void AppSteps::bulletin(const json& step) {
  const std::string to = step.at("to").get<std::string>();
  const json& given = step.at("bulletin");
  Value context = given.contains("context") ? valueFromJson(given.at("context")) : Value();
  Value bulletin = simhost::makeBulletin(app_.runtime(), text(given, "sectionID"), context,
                                         text(given, "message"));
  observer_.noteBulletin(bulletin, given);
  Value controller = to == "banner" ? banner_ : to == "lockscreen" ? lockScreen_ : notificationCenter_;
  const auto& shown = simhost::hostLog().shown[to];
  const std::size_t before = shown.size();
  // The observer is some host object; feed 2 stands for any feed.
  app_.send(controller, "observer:addBulletin:forFeed:",
            {app_.make("NSObject"), bulletin, Value::integer(2)});
  if (shown.size() == before) observer_.report({{"event", "withheld"}, {"to", to}, {"bulletin", given}});
}

Value AppSteps::applicationFor(const std::string& bundleId) {
  Value controller = app_.sendToClass("SBApplicationController", "sharedInstance");
  Value apps = app_.send(controller, "applicationsWithBundleIdentifier:",
                         {simhost::stringValue(bundleId)});
  if (apps.array() != nullptr && !apps.array()->empty()) return apps.array()->front();
  return simhost::addApplication(app_.runtime(), bundleId, Value());  // installed now
}

void AppSteps::badge(const json& step) {
  const std::string bundleId = step.at("bundleId").get<std::string>();
  Value app = applicationFor(bundleId);
  const json& value = step.at("value");
  app_.send(app, "setBadge:",
            {value.is_object() ? Value::string(host::T(value.at("subclassText").get<std::string>()),
                                               Value::StringClass::kSubclass)
                               : valueFromJson(value)});
  observer_.report({{"event", "badgeRequest"}, {"bundleId", bundleId}, {"requested", step.at("value")},
                    {"shows", jsonFromValue(app_.send(app, "badgeNumberOrString"))}});
}

json AppSteps::state() {
  json state = peekLibrary(libraryPath_);
  state.update(kind_ == Kind::kWhatsApp ? whatsAppState() : springBoardState());
  return state;
}

json AppSteps::whatsAppState() {
  const simhost::HostLog& log = simhost::hostLog();
  json sheets = json::array();
  for (const auto& sheet : log.sheets) {
    json titles = json::array();
    for (const auto& button : sheet.buttons) titles.push_back(button.first);
    sheets.push_back(titles);
  }
  json alerts = json::array();
  for (const host::AlertView& alert : app_.device().alerts().shown()) {
    json buttons = json::array({host::toUtf8(alert.cancelButtonTitle)});
    for (const auto& title : alert.otherButtonTitles) buttons.push_back(host::toUtf8(title));
    alerts.push_back({{"title", host::toUtf8(alert.title)}, {"message", host::toUtf8(alert.message)},
                      {"buttons", buttons}});
  }
  return {{"delivered", log.delivered}, {"receipts", log.receipts}, {"sent", log.sent},
          {"chats", log.chats}, {"sheets", sheets}, {"alerts", alerts}};
}

json AppSteps::springBoardState() {
  json shown = json::object();
  for (const char* where : {"banner", "lockscreen", "notificationCenter"}) {
    shown[where] = json::array();
    auto found = simhost::hostLog().shown.find(where);
    if (found == simhost::hostLog().shown.end()) continue;
    for (const Value& bulletin : found->second) shown[where].push_back(observer_.asGiven(bulletin));
  }
  return {{"shown", shown},
          {"badge", jsonFromValue(app_.send(application_, "badgeNumberOrString"))},
          {"statusBar", app_.device().statusBar().shown()}};
}

}  // namespace hushwall::sim
