#include "macho/image.h"

#include <algorithm>
#include <limits>

namespace hushwall::macho {
namespace {

// A fixed-size name field (segment and section names are 16 bytes, NUL
// padded, not necessarily terminated).
std::string fixedName(const Bytes& file, std::size_t at) {
  need(file, at, 16, "a name");
  std::string name(file.begin() + static_cast<std::ptrdiff_t>(at),
                   file.begin() + static_cast<std::ptrdiff_t>(at + 16));
  return name.substr(0, name.find('\0'));
}

Segment readSegment(const Bytes& file, const LoadCommand& command) {
  // segment_command_64: cmd, cmdsize, segname[16], vmaddr, vmsize,
  // fileoff, filesize, maxprot, initprot, nsects, flags; then section_64s
  // of 80 bytes: sectname[16], segname[16], addr, size, offset, ...
  if (command.size < 72) throw FormatError("an LC_SEGMENT_64 shorter than its fields");
  const std::size_t at = command.offset;
  Segment segment;
  segment.name = fixedName(file, at + 8);
  segment.commandOffset = at;
  segment.vmsize = le64(file, at + 32);
  segment.fileoff = le64(file, at + 40);
  segment.filesize = le64(file, at + 48);
  const std::uint32_t count = le32(file, at + 64);
  if (count > (command.size - 72) / 80)
    throw FormatError(segment.name + ": more sections than fit its command");
  if (segment.fileoff > file.size() || segment.filesize > file.size() - segment.fileoff) {
    throw FormatError(segment.name + " lies outside the file");
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t section = at + 72 + std::size_t{i} * 80;
    segment.sections.push_back(
        {fixedName(file, section), le32(file, section + 48), le64(file, section + 40)});
  }
  return segment;
}

}  // namespace

std::optional<LoadCommand> Image::find(std::uint32_t cmd) const {
  for (const LoadCommand& command : commands) {
    if (command.cmd == cmd) return command;
  }
  return std::nullopt;
}

const Segment* Image::segment(const std::string& name) const {
  for (const Segment& s : segments) {
    if (s.name == name) return &s;
  }
  return nullptr;
}

std::uint64_t Image::firstContent() const {
  std::uint64_t first = std::numeric_limits<std::uint64_t>::max();
  for (const Segment& s : segments) {
    if (s.fileoff > 0 && s.filesize > 0) first = std::min(first, s.fileoff);
    for (const Section& section : s.sections) {
      // Zero-fill sections (__bss, __common) have no bytes in the file.
      if (section.offset > 0) first = std::min<std::uint64_t>(first, section.offset);
    }
  }
  return first;
}

Image parseImage(const Bytes& file) {
  need(file, 0, kHeaderSize, "the Mach-O header");
  const std::uint32_t magic = le32(file, 0);
  if (magic == 0xbebafeca || magic == 0xcafebabe) {
    throw FormatError("a fat file: check and sign each architecture's slice (llvm-lipo -thin)");
  }
  if (magic == 0xfeedface)
    throw FormatError("a 32-bit Mach-O file, which this reader does not read");
  if (magic != kMagic64) throw FormatError("not a Mach-O file");
  Image image;
  image.cpuType = le32(file, 4);
  const std::uint32_t ncmds = le32(file, 16);
  const std::uint32_t sizeofcmds = le32(file, 20);
  need(file, kHeaderSize, sizeofcmds, "the load commands");
  image.commandsEnd = kHeaderSize + sizeofcmds;
  std::size_t at = kHeaderSize;
  for (std::uint32_t i = 0; i < ncmds; ++i) {
    LoadCommand command{le32(file, at), at, le32(file, at + 4)};
    if (command.size < 8 || command.size > image.commandsEnd - at) {
      throw FormatError("load command " + std::to_string(i) + " does not fit the load commands");
    }
    if (command.cmd == kSegment64) image.segments.push_back(readSegment(file, command));
    image.commands.push_back(command);
    at += command.size;
  }
  // What the count leaves over would be read as commands by whoever adds
  // one after them.
  if (at != image.commandsEnd) throw FormatError("the load commands do not fill sizeofcmds");
  return image;
}

}  // namespace hushwall::macho
