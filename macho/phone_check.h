// What the dynamic loader and the kernel of the package's oldest firmware
// would refuse in a binary, checked on Linux before the binary is packed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "macho/bytes.h"
#include "macho/ios7_rules.h"

namespace hushwall::macho {

// One sentence per problem; empty when the binary would load on the
// firmware `minOs` (iosVersion()) of an arm64 device.
std::vector<std::string> checkForPhone(const Bytes& file, std::uint32_t minOs);

}  // namespace hushwall::macho
