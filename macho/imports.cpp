#include "macho/imports.h"

namespace hushwall::macho {

std::vector<LinkedLibrary> linkedLibraries(const Bytes& file, const Image& image) {
  std::vector<LinkedLibrary> libraries;
  for (const LoadCommand& command : image.commands) {
    switch (command.cmd) {
      case kLoadDylib:
      case kLoadWeakDylib:
      case kReexportDylib:
      case kLazyLoadDylib:
      case kLoadUpwardDylib: {
        // dylib_command: cmd, cmdsize, then the name's offset from the
        // command's start (lc_str), timestamp and versions.
        const std::uint32_t name = le32(file, command.offset + 8);
        if (name < 24 || name >= command.size)
          throw FormatError("a library's name lies outside its command");
        libraries.push_back({cString(file, command.offset + name, command.offset + command.size,
                                     "a library's name"),
                             command.cmd == kLoadWeakDylib});
        break;
      }
      default:
        break;
    }
  }
  return libraries;
}

std::vector<Import> importedSymbols(const Bytes& file, const Image& image) {
  std::vector<Import> imports;
  const auto symtab = image.find(kSymtab);
  if (!symtab) return imports;
  // symtab_command: cmd, cmdsize, symoff, nsyms, stroff, strsize.
  const std::size_t symoff = le32(file, symtab->offset + 8);
  const std::size_t nsyms = le32(file, symtab->offset + 12);
  const std::size_t stroff = le32(file, symtab->offset + 16);
  const std::size_t strsize = le32(file, symtab->offset + 20);
  need(file, symoff, nsyms * 16, "the symbol table");
  need(file, stroff, strsize, "the string table");
  for (std::size_t i = 0; i < nsyms; ++i) {
    // nlist_64: n_strx, n_type, n_sect, n_desc, n_value.
    const std::size_t at = symoff + i * 16;
    const std::uint8_t type = file[at + 4];
    const bool debug = (type & 0xe0) != 0;      // N_STAB
    const bool undefined = (type & 0x0e) == 0;  // N_UNDF
    const bool external = (type & 0x01) != 0;   // N_EXT
    if (debug || !undefined || !external) continue;
    const std::uint32_t strx = le32(file, at);
    if (strx >= strsize) throw FormatError("a symbol's name lies outside the string table");
    const std::uint16_t desc = static_cast<std::uint16_t>(readLe(file, at + 6, 2));
    imports.push_back({cString(file, stroff + strx, stroff + strsize, "a symbol's name"),
                       static_cast<std::uint32_t>(desc >> 8), (desc & 0x0040) != 0});
  }
  return imports;
}

}  // namespace hushwall::macho
