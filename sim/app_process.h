// One app process of the simulated device, as hushwall-sim drives it:
// started with pipes to its stdin and stdout (sim/protocol.h) and its stderr
// in a log file, and never left running when this object goes.
#ifndef HUSHWALL_SIM_APP_PROCESS_H_
#define HUSHWALL_SIM_APP_PROCESS_H_

#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sim/protocol.h"

namespace hushwall::sim {

// How long to wait for a reply. An app may take as long as it needs while it
// works (uses the processor or does I/O), but no longer than `idleMs` without
// doing either, and no longer than `totalMs` in all. `progress`, when set, is
// told every few seconds how long the wait has lasted and how much processor
// time the app has used meanwhile.
struct ReplyWait {
  int idleMs = 30000;
  long long totalMs = 30000;
  std::function<void(double waitedSeconds, double processorSeconds)> progress;
};

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
  // std::runtime_error when the wait runs out; the process then still owes
  // that reply (owesReply()), so its next line would answer the wrong
  // request, and it is to be killed rather than asked again.
  std::optional<nlohmann::json> awaitReply(const ReplyWait& wait);
  // Sends a request and waits for its reply, as awaitReply.
  std::optional<nlohmann::json> request(const nlohmann::json& message, const ReplyWait& wait);
  bool owesReply() const { return owesReply_; }
  // Waits for the process to end by itself; kills it after `timeoutMs`.
  void waitForExit(int timeoutMs);
  // How the process ended ("killed by signal 6 (Aborted)") and the last
  // line of its stderr; waits for it to end.
  std::string howItEnded();

 private:
  void reap(bool block);
  // The processor time (in clock ticks) and the bytes read and written that
  // the process has used so far, as one count that grows while it works;
  // nothing while it is running or waiting for the disk at this moment.
  std::optional<unsigned long long> activity() const;
  // The processor time it has used so far.
  double processorSeconds() const;

  std::string name_;
  std::string logFile_;
  pid_t pid_ = -1;
  int toChild_ = -1;
  int fromChild_ = -1;
  std::optional<int> status_;  // set once reaped
  bool owesReply_ = false;
  std::optional<LineReader> reader_;
};

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_APP_PROCESS_H_
