#include "sim/final_state.h"

#include <algorithm>
#include <filesystem>

#include "model/paths.h"
#include "sim/device_setup.h"
#include "tools/history_table.h"

namespace hushwall::sim {

namespace fs = std::filesystem;

nlohmann::json databaseState(const std::string& root) {
  nlohmann::json state = {{"Blacklist", nlohmann::json::array()}, {"History", nlohmann::json::array()}};
  if (!fs::is_regular_file(databaseFile(root))) return state;
  // A writer killed in the middle of a transaction (an app the simulator
  // gave up on) leaves a hot journal; readTable reads on a read-write
  // connection, which rolls it back first.
  for (const char* table : {"Blacklist", "History"}) {
    state[table] = tools::readTable(databaseFile(root), table);
  }
  return state;
}

nlohmann::json savedPictures(const std::string& root) {
  std::vector<std::string> files;
  const fs::path dataDirectory = root + kDataDirectory;
  std::error_code ec;
  for (const auto& folder : fs::directory_iterator(dataDirectory, ec)) {
    if (!folder.is_directory()) continue;
    for (const auto& entry : fs::recursive_directory_iterator(folder.path(), ec)) {
      if (entry.is_regular_file()) files.push_back("/" + fs::relative(entry.path(), root).string());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace hushwall::sim
