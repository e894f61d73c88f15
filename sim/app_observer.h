// What one simulated app saw and did, as a list of events for the
// simulator's transcript: the platform's effects (vibrations, status-bar
// changes, alerts), the notifications that reached the process, and what
// reached the app's own implementations after Hushwall's hooks had their say
// (read from the host log). Platform effects are reported the moment they
// happen, after whatever the host log gained before them, so the events keep
// the order in which things happened.
#ifndef HUSHWALL_SIM_APP_OBSERVER_H_
#define HUSHWALL_SIM_APP_OBSERVER_H_

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/value.h"
#include "simhost/simulated_app.h"

namespace hushwall::sim {

class AppObserver {
 public:
  // Made before the library is loaded, so that nothing it does is missed.
  explicit AppObserver(simhost::SimulatedApp& app);
  // Starts reporting the notifications that reach the library's observers in
  // this process. Called once the library has added them; a notification is
  // then reported as heard before what the library does about it (nothing is
  // delivered before the main loop runs).
  void listenForNotifications();
  AppObserver(const AppObserver&) = delete;
  AppObserver& operator=(const AppObserver&) = delete;

  // Adds an event of the caller's own (a step's outcome) in its place.
  void report(nlohmann::json event) { add(std::move(event)); }

  // Remembers a bulletin as the scenario gave it, to report it that way.
  void noteBulletin(const host::Value& bulletin, nlohmann::json asGiven);
  nlohmann::json asGiven(const host::Value& bulletin) const;

  // The events since the last call, in order.
  nlohmann::json takeEvents();
  // Notifications delivered to this process since the last takeEvents().
  int deliveries() const { return *deliveries_; }

 private:
  void collectHostLog();
  void add(nlohmann::json event);

  struct Marks {
    std::size_t delivered = 0, receipts = 0, sent = 0, optionsOpened = 0, sheets = 0;
    int backgrounded = 0, terminated = 0;
    std::map<std::string, std::size_t> shown;
    std::set<std::string> chats;
    std::map<std::string, host::Value> badges;
  };

  simhost::SimulatedApp& app_;
  Marks marks_;
  nlohmann::json events_ = nlohmann::json::array();
  std::shared_ptr<int> deliveries_ = std::make_shared<int>(0);
  std::vector<std::pair<host::Value, nlohmann::json>> bulletins_;
};

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_APP_OBSERVER_H_
