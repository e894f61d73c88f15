#include "sim/library_peek.h"

#include <dlfcn.h>

#include <stdexcept>
#include <utility>
#include <vector>

#include "host/text.h"

namespace hushwall::sim {
namespace {

// Settings-file key and the flag's symbol, in the order the library reads
// them ("LockSettings" has no flag).
const std::pair<const char*, const char*> kFlags[] = {
    {"Enabled", "_ZN8hushwall16settings_EnabledE"},
    {"SaveHistory", "_ZN8hushwall20settings_SaveHistoryE"},
    {"ShowStatusbarIcon", "_ZN8hushwall26settings_ShowStatusBarIconE"},
    {"Vibrate", "_ZN8hushwall16settings_VibrateE"},
    {"ContactsOnly", "_ZN8hushwall21settings_ContactsOnlyE"},
    {"DeleteMessages", "_ZN8hushwall23settings_DeleteMessagesE"},
    {"ActionButton", "_ZN8hushwall21settings_ActionButtonE"},
};
// hushwall::blacklistNumbers, a std::vector<host::Text>*; the abi tag comes
// from the strings it holds.
constexpr char kBlacklistNumbers[] = "_ZN8hushwall16blacklistNumbersB5cxx11E";

void* symbol(void* library, const char* name) {
  void* address = ::dlsym(library, name);
  if (address == nullptr) throw std::runtime_error(std::string("the library has no ") + name);
  return address;
}

}  // namespace

nlohmann::json peekLibrary(const std::string& libraryPath) {
  void* library = ::dlopen(libraryPath.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (library == nullptr) throw std::runtime_error("the library is not loaded: " + libraryPath);
  nlohmann::json flags = nlohmann::json::object();
  for (const auto& [key, name] : kFlags) flags[key] = *static_cast<const bool*>(symbol(library, name));
  nlohmann::json numbers = nlohmann::json::array();
  auto* list = *static_cast<std::vector<host::Text>* const*>(symbol(library, kBlacklistNumbers));
  if (list != nullptr) {
    for (const host::Text& number : *list) numbers.push_back(host::toUtf8(number));
  }
  ::dlclose(library);  // drops only the reference taken here
  return {{"flags", flags}, {"blacklistNumbers", numbers}};
}

}  // namespace hushwall::sim
