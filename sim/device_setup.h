// The simulated device's files before its apps start, laid out from a
// scenario, and the settings companion's file work during a run.
#ifndef HUSHWALL_SIM_DEVICE_SETUP_H_
#define HUSHWALL_SIM_DEVICE_SETUP_H_

#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "sim/scenario.h"

namespace hushwall::sim {

// Marks the root as a device's (tools/device_root.h); installs the template
// database in the settings bundle; writes the settings
// file, the address book and the messenger's message database when the
// scenario has them; and, when it has blacklist rows, makes the data
// directory's database from the template with those rows stored as written.
// Without rows the data directory is left for SpringBoard to seed. Throws
// std::runtime_error.
void prepareDevice(const std::string& root, const Scenario& scenario,
                   const std::string& templateDatabase);

// The chats the messenger holds at first start: each distinct JID of the
// scenario's message rows.
std::set<std::string> initialChats(const Scenario& scenario);

// The settings file, rewritten whole as a binary property list.
void writeSettingsFile(const std::string& root, const nlohmann::json& values);

// The native path of the data directory's database.
std::string databaseFile(const std::string& root);

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_DEVICE_SETUP_H_
