#include "testing/fake_env.h"

namespace hushwall::testing {

void RecordingNotifyCenter::post(const std::string& name) {
  posted.push_back(name);
  queue_.push_back(name);
}

void RecordingNotifyCenter::addObserver(const std::string& name, Callback callback,
                                        host::SuspensionBehavior behavior) {
  observed.emplace_back(name, behavior);
  observers_.emplace(name, std::move(callback));
}

void RecordingNotifyCenter::deliver() {
  while (!queue_.empty()) {
    std::string name = queue_.front();
    queue_.pop_front();
    auto [first, last] = observers_.equal_range(name);
    for (auto it = first; it != last; ++it) it->second();
  }
}

bool FakeAddressBook::hasPersonMatchingPhoneNumber(const host::OptText& number) {
  lookups.push_back(number);
  return number.has_value() && contacts.count(*number) > 0;
}

void RecordingStatusBar::addImageNamed(const host::Text& name) {
  shown.insert(name);
  calls.push_back("add:" + host::toUtf8(name));
}

void RecordingStatusBar::removeImageNamed(const host::Text& name) {
  shown.erase(name);
  calls.push_back("remove:" + host::toUtf8(name));
}

host::OptText FakeBundles::bundlePath(const host::Text& devicePath) {
  if (!fs_.fileExists(devicePath)) return std::nullopt;
  return devicePath;
}

FakeEnv::FakeEnv() {
  env_.fileSystem = &fileSystem;
  env_.notifyCenter = &notifyCenter;
  env_.addressBook = &addressBook;
  env_.systemSounds = &systemSounds;
  env_.statusBar = &statusBar;
  env_.clock = &clock;
  env_.bundles = &bundles;
  previous_ = host::setEnv(&env_);
}

FakeEnv::~FakeEnv() { host::setEnv(previous_); }

}  // namespace hushwall::testing
