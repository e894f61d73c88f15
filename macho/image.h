// The parts of a thin 64-bit Mach-O file that signing and the phone check
// read: the header, the load commands, the segments with their sections.
// Only little-endian 64-bit files (arm64) are read: the Linux build makes
// nothing else, and a 32-bit or fat file is refused by name rather than
// misread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "macho/bytes.h"

namespace hushwall::macho {

// <mach-o/loader.h> numbers, as the format defines them.
constexpr std::uint32_t kMagic64 = 0xfeedfacf;
constexpr std::size_t kHeaderSize = 32;  // mach_header_64
constexpr std::uint32_t kCpuArm64 = 0x0100000c;
constexpr std::uint32_t kSegment64 = 0x19;
constexpr std::uint32_t kSymtab = 0x2;
constexpr std::uint32_t kLoadDylib = 0xc;
constexpr std::uint32_t kLoadWeakDylib = 0x80000018;
constexpr std::uint32_t kReexportDylib = 0x8000001f;
constexpr std::uint32_t kLazyLoadDylib = 0x20;
constexpr std::uint32_t kLoadUpwardDylib = 0x80000023;
constexpr std::uint32_t kCodeSignature = 0x1d;
constexpr std::uint32_t kVersionMinIphoneos = 0x25;
constexpr std::uint32_t kBuildVersion = 0x32;
constexpr std::uint32_t kDyldExportsTrie = 0x80000033;
constexpr std::uint32_t kDyldChainedFixups = 0x80000034;

struct Section {
  std::string name;
  std::uint32_t offset = 0;
  std::uint64_t size = 0;
};

struct Segment {
  std::string name;
  std::size_t commandOffset = 0;  // where its LC_SEGMENT_64 starts
  std::uint64_t vmsize = 0;
  std::uint64_t fileoff = 0;
  std::uint64_t filesize = 0;
  std::vector<Section> sections;
};

struct LoadCommand {
  std::uint32_t cmd = 0;
  std::size_t offset = 0;
  std::uint32_t size = 0;
};

struct Image {
  std::uint32_t cpuType = 0;
  std::size_t commandsEnd = 0;  // the first byte after the load commands
  std::vector<LoadCommand> commands;
  std::vector<Segment> segments;

  std::optional<LoadCommand> find(std::uint32_t cmd) const;
  const Segment* segment(const std::string& name) const;
  // The first byte of the file that a section or a segment other than the
  // header's own occupies: load commands may grow up to here.
  std::uint64_t firstContent() const;
};

// Throws FormatError for what is not a thin 64-bit little-endian Mach-O
// file or whose load commands do not fit it.
Image parseImage(const Bytes& file);

}  // namespace hushwall::macho
