#include <algorithm>
#include <array>

#include "macho/code_signature.h"
#include "macho/sha1.h"

namespace hushwall::macho {
namespace {

// SuperBlob header (magic, length, count) and two index entries (type,
// offset): the CodeDirectory and the requirements.
constexpr std::size_t kSuperBlobHeader = 12 + 2 * 8;
// CodeDirectory fields up to and including scatterOffset (version 0x20100).
constexpr std::size_t kCodeDirectoryHeader = 48;
// An empty requirements set: magic, length, count 0. Apple's tools write
// it even for ad-hoc code, and its hash fills special slot -2.
constexpr std::size_t kRequirementsSize = 12;
// Special slots, counted backwards from the code hashes: -1 the bundle's
// Info.plist (none bound, so zeros), -2 the requirements.
constexpr std::uint32_t kSpecialSlots = 2;

std::size_t pages(std::size_t codeLimit) { return (codeLimit + kPageSize - 1) / kPageSize; }

std::size_t codeDirectorySize(std::size_t codeLimit, const std::string& identifier) {
  return kCodeDirectoryHeader + identifier.size() + 1 +
         (kSpecialSlots + pages(codeLimit)) * kSha1Size;
}

std::size_t unpaddedSize(std::size_t codeLimit, const std::string& identifier) {
  return kSuperBlobHeader + codeDirectorySize(codeLimit, identifier) + kRequirementsSize;
}

void append(Bytes& out, const Sha1& hash) { out.insert(out.end(), hash.begin(), hash.end()); }

}  // namespace

std::size_t signatureSize(std::size_t codeLimit, const std::string& identifier) {
  return (unpaddedSize(codeLimit, identifier) + 15) / 16 * 16;
}

Bytes signatureFor(const Bytes& file, std::size_t codeLimit, const std::string& identifier) {
  need(file, 0, codeLimit, "the signed range");
  if (identifier.empty() || identifier.find('\0') != std::string::npos) {
    throw FormatError("a code signature needs an identifier without NUL bytes");
  }
  if (codeLimit > UINT32_MAX) throw FormatError("a file over 4 GiB needs codeLimit64");
  const std::size_t cdSize = codeDirectorySize(codeLimit, identifier);
  const std::size_t identOffset = kCodeDirectoryHeader;
  const std::size_t hashOffset = identOffset + identifier.size() + 1 + kSpecialSlots * kSha1Size;

  Bytes requirements;
  appendBe32(requirements, kRequirementsMagic);
  appendBe32(requirements, kRequirementsSize);
  appendBe32(requirements, 0);

  Bytes out;
  appendBe32(out, kSuperBlobMagic);
  appendBe32(out, static_cast<std::uint32_t>(unpaddedSize(codeLimit, identifier)));
  appendBe32(out, 2);
  appendBe32(out, kCodeDirectorySlot);
  appendBe32(out, kSuperBlobHeader);
  appendBe32(out, kRequirementsSlot);
  appendBe32(out, static_cast<std::uint32_t>(kSuperBlobHeader + cdSize));

  appendBe32(out, kCodeDirectoryMagic);
  appendBe32(out, static_cast<std::uint32_t>(cdSize));
  appendBe32(out, kCodeDirectoryVersion);
  appendBe32(out, kFlagAdhoc);
  appendBe32(out, static_cast<std::uint32_t>(hashOffset));
  appendBe32(out, static_cast<std::uint32_t>(identOffset));
  appendBe32(out, kSpecialSlots);
  appendBe32(out, static_cast<std::uint32_t>(pages(codeLimit)));
  appendBe32(out, static_cast<std::uint32_t>(codeLimit));
  for (std::uint8_t byte : {kSha1Size, kHashSha1, std::uint8_t{0} /* platform */, kPageShift}) {
    out.push_back(byte);
  }
  appendBe32(out, 0);  // spare2
  appendBe32(out, 0);  // scatterOffset: no scatter vector, every page counts
  out.insert(out.end(), identifier.begin(), identifier.end());
  out.push_back(0);
  append(out, sha1(requirements.data(), requirements.size()));  // slot -2
  append(out, Sha1{});                                          // slot -1
  for (std::size_t page = 0; page < pages(codeLimit); ++page) {
    const std::size_t begin = page * kPageSize;
    append(out, sha1(file.data() + begin, std::min(kPageSize, codeLimit - begin)));
  }
  out.insert(out.end(), requirements.begin(), requirements.end());
  out.resize(signatureSize(codeLimit, identifier), 0);
  return out;
}

}  // namespace hushwall::macho
