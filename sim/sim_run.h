// For the simulator's end-to-end tests: runs the real hushwall-sim on a
// scenario written by the test, on a device root of the test's own, and
// hands back what it printed, how it ended and the final state.
#ifndef HUSHWALL_SIM_SIM_RUN_H_
#define HUSHWALL_SIM_SIM_RUN_H_

#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "testing/temp_device_root.h"

namespace hushwall::sim {

struct SimResult {
  int exitCode = -1;   // -1 when it did not exit by itself
  std::string output;  // the transcript (stdout)
  std::string errors;  // stderr
  nlohmann::json state;  // null when no state was written
};

class SimRun {
 public:
  SimRun() = default;

  // The device root hushwall-sim is told to use (not made beforehand).
  std::string deviceRoot() const { return work_.path() + "/device"; }
  // Writes `scenario` to a file and plays it.
  SimResult play(const nlohmann::json& scenario) const;
  // Plays a scenario file as it is (which may be missing or broken).
  SimResult playFile(const std::string& path) const;
  std::string file(const std::string& name) const { return work_.path() + "/" + name; }

 private:
  testing::TempDeviceRoot work_;
};

// Processes (other than this one) whose command line mentions `text`.
std::vector<pid_t> processesMentioning(const std::string& text);

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_SIM_RUN_H_
