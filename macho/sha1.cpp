#include "macho/sha1.h"

#include <openssl/evp.h>

#include <stdexcept>

namespace hushwall::macho {

Sha1 sha1(const std::uint8_t* data, std::size_t size) {
  Sha1 digest{};
  unsigned int length = 0;
  if (EVP_Digest(data, size, digest.data(), &length, EVP_sha1(), nullptr) != 1 ||
      length != digest.size()) {
    throw std::runtime_error("SHA-1 failed");
  }
  return digest;
}

}  // namespace hushwall::macho
