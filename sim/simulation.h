// Plays a scenario on a simulated device: lays out the device's files,
// starts its bus, SpringBoard and WhatsApp (each loading the library), plays
// the steps in order, waiting after each until every process has handled the
// notifications it caused, and collects the final state. A process that
// crashes is restarted, as the device would, and the crash is recorded.
#ifndef HUSHWALL_SIM_SIMULATION_H_
#define HUSHWALL_SIM_SIMULATION_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "sim/scenario.h"
#include "sim/transcript.h"

namespace hushwall::sim {

struct SimulationPaths {
  std::string whatsApp, springBoard;  // each app's program: hushwall-app, or an Objective-C app
  std::string library;                // libHushwall.so, or the device adapter
  std::string templateDatabase;       // the settings bundle's HSWL.db
  std::vector<std::string> appOptions;  // added to each app's command line
};

// A step the device could not play as written (no alert on screen, no such
// button, a notification name that is none); the message names the step.
class StepFailed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct RunOutcome {
  // The final state; after a failure, what the device held by then, with
  // "failure": {"step", "kind", "message"} (step and kind null outside a step).
  nlohmann::json state;
  std::optional<std::string> failure;  // why the run stopped early
};

// An app's reply may take as long as the app keeps working; the simulator
// gives up on one that does no work this long.
inline constexpr int kDefaultReplyIdleMs = 30000;

// `root` must be an empty directory. Returns once every process it started,
// and the bus, have stopped, whether the scenario played to its end or not.
RunOutcome runScenario(const Scenario& scenario, const std::string& root,
                       const SimulationPaths& paths, int replyIdleMs, Transcript& transcript);

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_SIMULATION_H_
