// Plays a scenario on a simulated device: lays out the device's files,
// starts its bus, SpringBoard and WhatsApp (each loading the library), plays
// the steps in order, waiting after each until every process has handled the
// notifications it caused, and collects the final state. A process that
// crashes is restarted, as the device would, and the crash is recorded.
#ifndef HUSHWALL_SIM_SIMULATION_H_
#define HUSHWALL_SIM_SIMULATION_H_

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "sim/scenario.h"
#include "sim/transcript.h"

namespace hushwall::sim {

struct SimulationPaths {
  std::string app;               // hushwall-app
  std::string library;           // libHushwall.so
  std::string templateDatabase;  // the settings bundle's HSWL.db
};

// A step the device could not play as written (no alert on screen, no such
// button, a notification name that is none); the message names the step.
class StepFailed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// `root` must be an empty directory. Returns the final state. On any
// failure it throws, after stopping every process it started and the bus.
nlohmann::json runScenario(const Scenario& scenario, const std::string& root,
                           const SimulationPaths& paths, Transcript& transcript);

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_SIMULATION_H_
