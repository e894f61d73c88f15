// The readable account of a run: what each step did in each process, in the
// order it happened, one line per event.
#ifndef HUSHWALL_SIM_TRANSCRIPT_H_
#define HUSHWALL_SIM_TRANSCRIPT_H_

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "sim/scenario.h"

namespace hushwall::sim {

class Transcript {
 public:
  explicit Transcript(std::ostream& out) : out_(out) {}

  void heading(const std::string& text);
  void step(const Step& step);
  // One line said by or about `who` ("whatsapp", "springboard", "companion").
  void say(const std::string& who, const std::string& text);
  // Every event of an app's reply.
  void events(const std::string& who, const nlohmann::json& events);

 private:
  std::ostream& out_;
};

// The line for one event of an app (see AppObserver); empty for events not
// worth a line.
std::string describeEvent(const nlohmann::json& event);
// One database row (keyed by column, as the final state has it).
std::string describeHistoryRow(const nlohmann::json& row);
std::string describeBlacklistRow(const nlohmann::json& row);
// "contactsChanged" for "com.Corvanta.HushwallSettings.contactsChanged".
std::string shortName(const std::string& notification);

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_TRANSCRIPT_H_
