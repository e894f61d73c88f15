// What the user and the system do to one simulated app, one scenario step
// at a time, and what the app can tell about itself at the end of a run.
// Steps arrive as the scenario wrote them (already checked by hushwall-sim);
// a key the scenario left out is an absent value.
#ifndef HUSHWALL_SIM_APP_STEPS_H_
#define HUSHWALL_SIM_APP_STEPS_H_

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "host/value.h"
#include "sim/app_observer.h"
#include "simhost/simulated_app.h"

namespace hushwall::sim {

// A step that cannot be played in this app's present state (no sheet with
// that button, no alert on screen, a step for the other app). Anything else
// that escapes a step comes from the app's or the library's own code and
// ends the process, as it would on the device.
class StepError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class AppSteps {
 public:
  enum class Kind { kWhatsApp, kSpringBoard };

  // Made after the library is loaded: the app's own objects (connection,
  // chat list, delegate; bulletin controllers and the messenger's icon).
  AppSteps(simhost::SimulatedApp& app, AppObserver& observer, Kind kind,
           std::string libraryPath);

  // Plays one step ("do" names it). Throws StepError.
  void play(const nlohmann::json& step);
  // What the final state needs from this process.
  nlohmann::json state();

 private:
  void incoming(const nlohmann::json& step);
  void send(const nlohmann::json& step);
  void chatOptions(const nlohmann::json& step);
  void tap(const std::string& title);
  void answer(std::int64_t index);
  void bulletin(const nlohmann::json& step);
  void badge(const nlohmann::json& step);
  host::Value applicationFor(const std::string& bundleId);
  nlohmann::json whatsAppState();
  nlohmann::json springBoardState();

  simhost::SimulatedApp& app_;
  AppObserver& observer_;
  Kind kind_;
  std::string libraryPath_;
  host::Value connection_, chatList_, delegate_, application_;
  host::Value banner_, lockScreen_, notificationCenter_;
};

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_APP_STEPS_H_
