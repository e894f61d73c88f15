// What the library holds inside this process: its settings flags and its
// in-memory blacklist.
//
// The library keeps both in static variables of its own and has no way to
// be asked for them; on a phone one would attach a debugger and read them.
// The simulated app takes the same look from the host side, through dlsym on
// the loaded library, so that the final state reports what the library
// really holds rather than what the files say it should. Only this file
// knows the variables' (mangled) symbol names.
#ifndef HUSHWALL_SIM_LIBRARY_PEEK_H_
#define HUSHWALL_SIM_LIBRARY_PEEK_H_

#include <nlohmann/json.hpp>
#include <string>

namespace hushwall::sim {

// {"flags": {"Enabled": ..., ...seven keys}, "blacklistNumbers": [...]}.
// The library must be loaded; throws std::runtime_error naming a symbol it
// does not export.
nlohmann::json peekLibrary(const std::string& libraryPath);

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_LIBRARY_PEEK_H_
