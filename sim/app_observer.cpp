#include "sim/app_observer.h"

#include "sim/json_values.h"
#include "simhost/host_log.h"
#include "simhost/object_access.h"

namespace hushwall::sim {
namespace {

using nlohmann::json;

json idList(const std::vector<std::string>& ids) { return json(ids); }

}  // namespace

AppObserver::AppObserver(simhost::SimulatedApp& app) : app_(app) {
  marks_.chats = simhost::hostLog().chats;
  auto& device = app_.device();
  device.systemSounds().onPlay = [this](std::uint32_t sound) {
    add({{"event", "sound"}, {"id", sound}});
  };
  device.statusBar().onChange = [this](const std::string& change, const std::string& name) {
    add({{"event", "statusBar"}, {"change", change}, {"name", name}});
  };
  device.alerts().onShow = [this](const host::AlertView& alert) {
    json buttons = json::array({host::toUtf8(alert.cancelButtonTitle)});
    for (const auto& title : alert.otherButtonTitles) buttons.push_back(host::toUtf8(title));
    add({{"event", "alert"}, {"title", host::toUtf8(alert.title)},
         {"message", host::toUtf8(alert.message)}, {"buttons", buttons}});
  };
}

void AppObserver::listenForNotifications() {
  auto& center = app_.device().notifyCenter();
  // The names the library observes here: what the process hears is what it
  // listens to, and nothing else counts as delivered.
  std::set<std::string> names;
  for (const auto& observation : center.observations()) names.insert(observation.name);
  for (const std::string& name : names) {
    center.addObserver(
        name,
        [this, name, deliveries = deliveries_] {
          ++*deliveries;
          add({{"event", "received"}, {"name", name}});
        },
        host::SuspensionBehavior::kHold);
  }
}

void AppObserver::noteBulletin(const host::Value& bulletin, json asGiven) {
  bulletins_.emplace_back(bulletin, std::move(asGiven));
}

json AppObserver::asGiven(const host::Value& bulletin) const {
  for (const auto& [made, given] : bulletins_) {
    if (made.isSameObject(bulletin)) return given;
  }
  return jsonFromValue(bulletin);
}

void AppObserver::add(json event) {
  collectHostLog();
  events_.push_back(std::move(event));
}

json AppObserver::takeEvents() {
  collectHostLog();
  json taken = std::move(events_);
  events_ = json::array();
  *deliveries_ = 0;
  return taken;
}

void AppObserver::collectHostLog() {
  const simhost::HostLog& log = simhost::hostLog();
  for (; marks_.delivered < log.delivered.size(); ++marks_.delivered) {
    events_.push_back({{"event", "delivered"}, {"ids", idList(log.delivered[marks_.delivered])}});
  }
  for (; marks_.receipts < log.receipts.size(); ++marks_.receipts) {
    events_.push_back({{"event", "receipts"}, {"ids", idList(log.receipts[marks_.receipts])}});
  }
  for (; marks_.sent < log.sent.size(); ++marks_.sent) {
    events_.push_back({{"event", "sent"}, {"id", log.sent[marks_.sent]}});
  }
  for (; marks_.optionsOpened < log.optionsOpened.size(); ++marks_.optionsOpened) {
    events_.push_back({{"event", "optionsOpened"}, {"jid", log.optionsOpened[marks_.optionsOpened]
                                                                .value_or("")}});
  }
  for (; marks_.sheets < log.sheets.size(); ++marks_.sheets) {
    const simhost::SheetRecord& sheet = log.sheets[marks_.sheets];
    json buttons = json::array();
    for (const auto& button : sheet.buttons) buttons.push_back(button.first);
    events_.push_back({{"event", "sheet"}, {"title", sheet.title ? json(*sheet.title) : json()},
                       {"buttons", buttons}});
  }
  for (; marks_.backgrounded < log.backgrounded; ++marks_.backgrounded) {
    events_.push_back({{"event", "backgrounded"}});
  }
  for (; marks_.terminated < log.terminated; ++marks_.terminated) {
    events_.push_back({{"event", "terminated"}});
  }
  for (const auto& jid : marks_.chats) {
    if (log.chats.count(jid) == 0) events_.push_back({{"event", "chatDeleted"}, {"jid", jid}});
  }
  marks_.chats = log.chats;
  for (const auto& [where, bulletins] : log.shown) {
    for (std::size_t& mark = marks_.shown[where]; mark < bulletins.size(); ++mark) {
      events_.push_back({{"event", "shown"}, {"to", where}, {"bulletin", asGiven(bulletins[mark])}});
    }
  }
  for (const auto& [bundleId, badge] : log.badges) {
    auto known = marks_.badges.find(bundleId);
    if (known == marks_.badges.end() || known->second != badge) {
      events_.push_back({{"event", "badge"}, {"bundleId", bundleId}, {"value", jsonFromValue(badge)}});
    }
  }
  marks_.badges = log.badges;
}

}  // namespace hushwall::sim
