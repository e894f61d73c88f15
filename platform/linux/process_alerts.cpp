#include "platform/linux/process_alerts.h"

#include <stdexcept>

namespace hushwall::linux_platform {

void ProcessAlerts::show(const host::AlertView& alert, Delegate delegate) {
  shown_.push_back(alert);
  pending_ = std::move(delegate);
  if (onShow) onShow(alert);
}

void ProcessAlerts::answer(std::intptr_t index) {
  if (!pending_) throw std::logic_error("no alert is on screen");
  const host::AlertView alert = shown_.back();
  const auto buttons = static_cast<std::intptr_t>(alert.otherButtonTitles.size() + 1);
  if (index < 0 || index >= buttons) {
    throw std::logic_error("the alert on screen has no button " + std::to_string(index));
  }
  Delegate delegate = std::move(pending_);
  pending_ = nullptr;  // the alert is dismissed before its delegate runs
  if (delegate) delegate(alert, index);
}

}  // namespace hushwall::linux_platform
