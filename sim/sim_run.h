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
  // The device root is `rootName` inside a temporary folder of the test's.
  explicit SimRun(std::string rootName = "device") : rootName_(std::move(rootName)) {}

  // The device root hushwall-sim is told to use (not made beforehand).
  std::string deviceRoot() const { return work_.path() + "/" + rootName_; }
  // Writes `scenario` to a file and plays it.
  SimResult play(const nlohmann::json& scenario) const;
  // Plays a scenario file as it is (which may be missing or broken), with
  // `options` added to hushwall-sim's command line.
  SimResult playFile(const std::string& path, const std::vector<std::string>& options = {}) const;
  std::string file(const std::string& name) const { return work_.path() + "/" + name; }

  // Writes `scenario` to a file and starts hushwall-sim on it with `options`
  // added to its command line, without waiting for it.
  pid_t start(const nlohmann::json& scenario, const std::vector<std::string>& options = {}) const;
  // Waits for a started hushwall-sim (at most `timeoutSeconds`; then it is
  // stopped with SIGTERM) and collects what it left.
  SimResult finish(pid_t pid, int timeoutSeconds = 60) const;
  // What it printed so far.
  std::string output() const;

 private:
  pid_t startFile(const std::string& path, const std::vector<std::string>& options) const;

  std::string rootName_;
  testing::TempDeviceRoot work_;
};

// Processes (other than this one) whose command line mentions `text`.
std::vector<pid_t> processesMentioning(const std::string& text);

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_SIM_RUN_H_
