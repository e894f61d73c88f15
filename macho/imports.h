// What a Mach-O file needs from other libraries: the libraries its
// load commands name, in the order their two-level ordinals count them,
// and the undefined symbols of its symbol table with the library each is
// bound to.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "macho/image.h"

namespace hushwall::macho {

struct LinkedLibrary {
  std::string path;
  bool weak = false;  // LC_LOAD_WEAK_DYLIB: a missing library is no error
};

struct Import {
  std::string symbol;         // as stored, with the leading underscore
  std::uint32_t ordinal = 0;  // 1-based into linkedLibraries; 0xfe, 0xff: no library
  bool weak = false;          // N_WEAK_REF: a missing symbol is bound to 0
};

constexpr std::uint32_t kOrdinalExecutable = 0xfe;     // EXECUTABLE_ORDINAL
constexpr std::uint32_t kOrdinalDynamicLookup = 0xff;  // DYNAMIC_LOOKUP_ORDINAL

std::vector<LinkedLibrary> linkedLibraries(const Bytes& file, const Image& image);
std::vector<Import> importedSymbols(const Bytes& file, const Image& image);

}  // namespace hushwall::macho
