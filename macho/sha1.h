// SHA-1, the only page hash the kernels of iOS 7 and 8 check a code
// signature with (OpenSSL's libcrypto does the hashing).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace hushwall::macho {

using Sha1 = std::array<std::uint8_t, 20>;

Sha1 sha1(const std::uint8_t* data, std::size_t size);

}  // namespace hushwall::macho
