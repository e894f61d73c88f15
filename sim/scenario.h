// A scenario for the simulated device: how the device looks before its apps
// start (settings file, blacklist, contacts, the messenger's message
// database) and the steps to play. Everything is checked when the file is
// read, before anything starts, so that a bad scenario changes nothing.
#ifndef HUSHWALL_SIM_SCENARIO_H_
#define HUSHWALL_SIM_SCENARIO_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace hushwall::sim {

// A scenario that cannot be played; the message names the file, the step
// (its number, from 1, and its kind) and the field.
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Step {
  int number = 0;              // from 1, in file order
  std::string kind;            // "do"
  std::optional<double> at;    // the device clock for the step
  nlohmann::json body;         // the step as written
};

struct BlacklistEntry {
  std::string name;
  std::string phoneNumber;
};

struct ChatMessage {
  std::optional<std::string> toJID, fromJID;
};

struct Scenario {
  std::optional<nlohmann::json> settings;      // absent: no settings file
  std::vector<BlacklistEntry> blacklist;
  std::optional<std::vector<std::string>> contacts;  // absent: no address book
  std::optional<std::vector<ChatMessage>> chatStorage;  // absent: no message database
  std::vector<Step> steps;
};

// The most levels of nested arrays and objects a scenario may have, the
// document itself counting as one: far more than any scenario needs, well
// below what the simulator's conversions take (kMaxConvertedNesting in
// sim/json_values.h) and what the apps read back from a property list.
inline constexpr std::size_t kMaxScenarioNesting = 128;

// Throws ScenarioError.
Scenario parseScenario(const nlohmann::json& document);
// The text of a scenario file.
Scenario parseScenarioText(std::string_view text);
Scenario loadScenario(const std::string& path);

// "step 3 (tap)".
std::string stepName(const Step& step);
// The app a step is played in, "whatsapp" or "springboard"; nothing for the
// companion's steps and "restart".
std::optional<std::string> appOfStep(const std::string& kind);

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_SCENARIO_H_
