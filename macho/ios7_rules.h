// What iOS 7.0 offers a tweak to link against: the libraries it ships and
// the parts of its C++ library that came later. Each entry says where that
// is known from.
#pragma once

#include <cstddef>
#include <cstdint>

namespace hushwall::macho {

// A firmware version as LC_VERSION_MIN_IPHONEOS encodes it: xxxx.yy.zz in
// nibbles, 7.0 is 0x00070000.
constexpr std::uint32_t iosVersion(unsigned major, unsigned minor) {
  return major << 16 | minor << 8;
}
constexpr std::uint32_t kNever = 0xffffffff;  // not in any firmware's library, or not shown to be

struct ShippedLibrary {
  const char* path;
  const char* reason;
};

// The only libraries the package's binaries may load.
extern const ShippedLibrary kIos7Libraries[];
extern const std::size_t kIos7LibraryCount;

struct LaterSymbol {
  // An ECMAScript regex searched for in the Itanium name (no Mach-O
  // underscore), anchored where the whole name is meant. No ".*": the
  // standard library's matcher recurses once per character it skips.
  const char* pattern;
  std::uint32_t since;  // the first firmware whose libc++ or libc++abi exports it
  const char* reason;
};

// The C++ library's exports that a firmware older than `since` lacks, from
// libc++'s availability markup (<__availability> of libc++-14-dev and the
// SDK), which Debian's build of the headers switches off, so that nothing
// stops them at compile time.
extern const LaterSymbol kLaterCxxSymbols[];
extern const std::size_t kLaterCxxSymbolCount;

// Functions that the tweak looks up when it starts (platform/darwin's
// optional symbols) because a firmware or a device may lack them; a strong
// import would make dyld refuse the whole library instead.
extern const char* const kLookedUpAtRunTime[];
extern const std::size_t kLookedUpAtRunTimeCount;

}  // namespace hushwall::macho
