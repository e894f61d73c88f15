// The two byte orders a Mach-O file mixes. Its header and load commands are
// in the CPU's order, little-endian on arm64; its code signature is in
// network order (big-endian), because the kernel reads the same blob on
// every architecture. Every read is bounds-checked: a file that ends early
// is an error, never a read past its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace hushwall::macho {

using Bytes = std::vector<std::uint8_t>;

// A file that is not what its headers say (truncated, out of range).
struct FormatError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

inline void need(const Bytes& bytes, std::size_t at, std::size_t size, const char* what) {
  if (at > bytes.size() || size > bytes.size() - at) {
    throw FormatError(std::string(what) + " runs past the end (" + std::to_string(at) + "+" +
                      std::to_string(size) + " of " + std::to_string(bytes.size()) + " bytes)");
  }
}

inline std::uint64_t readLe(const Bytes& b, std::size_t at, std::size_t size) {
  need(b, at, size, "a little-endian field");
  std::uint64_t value = 0;
  for (std::size_t i = size; i-- > 0;) value = value << 8 | b[at + i];
  return value;
}
inline std::uint32_t le32(const Bytes& b, std::size_t at) {
  return static_cast<std::uint32_t>(readLe(b, at, 4));
}
inline std::uint64_t le64(const Bytes& b, std::size_t at) { return readLe(b, at, 8); }
inline void putLe(Bytes& b, std::size_t at, std::uint64_t value, std::size_t size) {
  need(b, at, size, "a little-endian field");
  for (std::size_t i = 0; i < size; ++i) b[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

inline std::uint32_t be32(const Bytes& b, std::size_t at) {
  need(b, at, 4, "a big-endian field");
  return std::uint32_t{b[at]} << 24 | std::uint32_t{b[at + 1]} << 16 |
         std::uint32_t{b[at + 2]} << 8 | b[at + 3];
}
inline void appendBe32(Bytes& b, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8)
    b.push_back(static_cast<std::uint8_t>(value >> shift));
}

// The NUL-terminated string at `at`, which must end inside [at, end).
inline std::string cString(const Bytes& b, std::size_t at, std::size_t end, const char* what) {
  need(b, at, 0, what);
  for (std::size_t i = at; i < end && i < b.size(); ++i) {
    if (b[i] == 0)
      return std::string(b.begin() + static_cast<std::ptrdiff_t>(at),
                         b.begin() + static_cast<std::ptrdiff_t>(i));
  }
  throw FormatError(std::string(what) + " is not NUL-terminated");
}

}  // namespace hushwall::macho
