// The parts of the final state that live in the device's files rather than
// in its processes.
#ifndef HUSHWALL_SIM_FINAL_STATE_H_
#define HUSHWALL_SIM_FINAL_STATE_H_

#include <nlohmann/json.hpp>
#include <string>

namespace hushwall::sim {

// {"Blacklist": [...], "History": [...]}: every row, keyed by column, in
// rowid order; empty arrays while the data directory holds no database.
nlohmann::json databaseState(const std::string& root);

// The saved pictures (every file in the data directory's per-number
// folders), sorted, as device paths: relative to the device root, with the
// leading "/" the library writes into the history's mediaFileName.
nlohmann::json savedPictures(const std::string& root);

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_FINAL_STATE_H_
