#include "platform/darwin/optional_symbols.h"

#include <dlfcn.h>

namespace hushwall::darwin {
namespace {

// Looked up in every image the process has loaded: Substrate is injected
// before us, and AddressBook is linked by both hosts and by us.
template <typename Function>
Function lookUp(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_DEFAULT, name));
}

}  // namespace

HookMessageFunction substrateHookMessage() {
  return lookUp<HookMessageFunction>("MSHookMessageEx");
}

FindPersonFunction addressBookFindPerson() {
  return lookUp<FindPersonFunction>("ABCFindPersonMatchingPhoneNumber");
}

}  // namespace hushwall::darwin
