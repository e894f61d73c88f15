#include "host/env.h"

#include <cstdio>
#include <cstdlib>

namespace hushwall::host {
namespace {
// The platform of this process; see env.h for why it is process-wide.
Env* current = nullptr;
}  // namespace

Env& env() {
  if (current == nullptr) {
    // Reaching the platform before the host installed it is a wiring fault in
    // the host, not something the logic can recover from.
    std::fprintf(stderr, "hushwall: no platform Env installed\n");
    std::abort();
  }
  return *current;
}

Env* setEnv(Env* env) {
  Env* previous = current;
  current = env;
  return previous;
}

}  // namespace hushwall::host
