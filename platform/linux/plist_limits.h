// What a property list must satisfy before libplist may parse it.
//
// libplist builds, frees and copies its trees recursively, so a file nested a
// few hundred thousand levels deep overflows the stack, and a binary file
// whose containers refer to the same container twice at every level expands
// to an exponential tree (a few hundred bytes can ask for gigabytes). It is
// also built with assertions, one of which aborts on a dictionary key holding
// a NUL character. Files are checked here first, conservatively: a file that
// passes cannot hurt the parser; a reasonable property list always passes.
#ifndef HUSHWALL_PLATFORM_LINUX_PLIST_LIMITS_H_
#define HUSHWALL_PLATFORM_LINUX_PLIST_LIMITS_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace hushwall::linux_platform {

// Most levels from the root (level 1) down to the innermost value.
inline constexpr std::size_t kMaxPlistNesting = 512;
// XML: most array and dict elements in one file. libplist's XML parser is
// iterative, but it frees a tree recursively (also when it gives up half way),
// so the number of containers bounds the recursion it can reach.
inline constexpr std::size_t kMaxXmlContainers = 10000;
// Most dictionary keys in one file, all dictionaries together (in a binary
// file counting every copy, as above). libplist's dictionaries and ours grow
// worse than linearly with their keys: 470,000 keys took seconds and a few
// million a minute, on every reload of the settings. The library reads eight
// keys; a few thousand is generous for any settings file.
inline constexpr std::size_t kMaxPlistKeys = 4096;
// Binary: most nodes the parser may build, counting every copy it makes of an
// object that is referred to more than once: enough for a dictionary of
// kMaxPlistKeys keys. libplist's binary reader takes time growing with the
// square of an array's length: 8,000 items took 0.36 s, 32,000 over 3 s and
// a million (a 1 MB file) longer than anyone waits.
inline constexpr std::uint64_t kMaxBinaryNodes = 2 * kMaxPlistKeys + 2;
// Most bytes in one file. The settings file is a few hundred bytes; a
// megabyte leaves room for thousands of long keys, while the 60 MB that the
// file reader allows took the parser over two seconds.
inline constexpr std::size_t kMaxPlistBytes = 1u << 20;

// True when `bytes` can be handed to plist_from_memory, and the tree it gives
// read, safely. Says nothing about whether the bytes are a property list.
bool plistSafeToParse(std::string_view bytes);

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_PLIST_LIMITS_H_
