// One app process of the simulated device, as hushwall-sim drives it:
// started with pipes to its stdin and stdout (sim/protocol.h) and its stderr
// in a log file, and never left running when this object goes.
#ifndef HUSHWALL_SIM_APP_PROCESS_H_
#define HUSHWALL_SIM_APP_PROCESS_H_

#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "sim/protocol.h"

namespace hushwall::sim {

class AppProcess {
 public:
  // Starts argv[0] with the rest as its arguments. Throws std::runtime_error.
  AppProcess(std::string name, const std::vector<std::string>& argv, std::string logFile);
  // Kills and reaps the process if it still runs.
  ~AppProcess();
  AppProcess(const AppProcess&) = delete;
  AppProcess& operator=(const AppProcess&) = delete;

  const std::string& name() const { return name_; }
  pid_t pid() const { return pid_; }

  // The next reply; nothing when the process ended instead. Throws
  // std::runtime_error when nothing comes within `timeoutMs`.
  std::optional<nlohmann::json> awaitReply(int timeoutMs);
  // Sends a request and waits for its reply, as awaitReply.
  std::optional<nlohmann::json> request(const nlohmann::json& message, int timeoutMs);
  // Waits for the process to end by itself; kills it after `timeoutMs`.
  void waitForExit(int timeoutMs);
  // How the process ended ("killed by signal 6 (Aborted)") and the last
  // line of its stderr; waits for it to end.
  std::string howItEnded();

 private:
  void reap(bool block);

  std::string name_;
  std::string logFile_;
  pid_t pid_ = -1;
  int toChild_ = -1;
  int fromChild_ = -1;
  std::optional<int> status_;  // set once reaped
  std::optional<LineReader> reader_;
};

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_APP_PROCESS_H_
