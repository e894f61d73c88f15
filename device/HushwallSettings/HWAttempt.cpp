#include "HWAttempt.h"

#include <exception>

std::optional<std::string> HWAttempt(const std::function<void()>& change) {
  try {
    change();
  } catch (const std::exception& e) {
    return std::string(e.what());
  }
  return std::nullopt;
}
