#include "testing/private_bus.h"

namespace hushwall::testing {

PrivateBus::PrivateBus() : ownRoot_(std::make_unique<TempDeviceRoot>()), bus_(ownRoot_->path()) {}

PrivateBus::PrivateBus(const std::string& deviceRootNativePath) : bus_(deviceRootNativePath) {}

}  // namespace hushwall::testing
