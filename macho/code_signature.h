// The code signature blob that LC_CODE_SIGNATURE points at, as the kernel
// reads it (Apple's open-source cs_blobs.h names the structures): a
// SuperBlob whose index leads to a CodeDirectory, which holds one hash per
// page of the file up to its code limit, and to the requirements.
//
// The kernels of iOS 7 and 8 validate only SHA-1 CodeDirectories
// (hashType 1, hashSize 20; xnu of that generation refuses any other in
// cs_validate_codedirectory) with 4096-byte pages; SHA-256 came with later
// firmware. A jailbreak lets an ad-hoc signature stand in for Apple's, so
// the signature carries no certificate, but the kernel still parses it and
// compares each page with its hash as the page is brought in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "macho/bytes.h"

namespace hushwall::macho {

constexpr std::uint32_t kSuperBlobMagic = 0xfade0cc0;      // CSMAGIC_EMBEDDED_SIGNATURE
constexpr std::uint32_t kCodeDirectoryMagic = 0xfade0c02;  // CSMAGIC_CODEDIRECTORY
constexpr std::uint32_t kRequirementsMagic = 0xfade0c01;   // CSMAGIC_REQUIREMENTS
constexpr std::uint32_t kCodeDirectorySlot = 0;            // CSSLOT_CODEDIRECTORY
constexpr std::uint32_t kRequirementsSlot = 2;             // CSSLOT_REQUIREMENTS
constexpr std::uint8_t kHashSha1 = 1;                      // CS_HASHTYPE_SHA1
constexpr std::uint8_t kSha1Size = 20;
constexpr std::uint8_t kPageShift = 12;  // 4096-byte pages, log2
constexpr std::size_t kPageSize = std::size_t{1} << kPageShift;
// 0x20100 adds the scatter offset to the first layout; it is what the
// platform's tools wrote for iOS 7 and what its kernel parses. Later
// fields (team, 64-bit limit, executable segment) would only be skipped.
constexpr std::uint32_t kCodeDirectoryVersion = 0x20100;
constexpr std::uint32_t kFlagAdhoc = 0x2;  // CS_ADHOC: no certificate chain

// The fields of a CodeDirectory that decide whether the kernel takes it.
struct CodeDirectory {
  std::uint32_t version = 0;
  std::uint32_t flags = 0;
  std::uint8_t hashType = 0;
  std::uint8_t hashSize = 0;
  std::uint8_t pageShift = 0;
  std::uint32_t nSpecialSlots = 0;
  std::uint32_t nCodeSlots = 0;
  std::uint32_t codeLimit = 0;
  std::string identifier;
  std::size_t offset = 0;        // in the file
  std::uint32_t hashOffset = 0;  // in the CodeDirectory
};

// The number of bytes signatureFor() will return for these inputs, known
// before the file's load commands are final (they are hashed too).
std::size_t signatureSize(std::size_t codeLimit, const std::string& identifier);

// An ad-hoc signature of file[0, codeLimit): one SHA-1 CodeDirectory and
// an empty requirements set, padded to 16 bytes.
Bytes signatureFor(const Bytes& file, std::size_t codeLimit, const std::string& identifier);

// Reads the CodeDirectory of the signature at file[offset, offset + size).
// Throws FormatError when a blob, an index entry, the identifier or the
// hash slots run past their container.
CodeDirectory readCodeDirectory(const Bytes& file, std::size_t offset, std::size_t size);

// What in the file or the signature the kernel of iOS 7 would refuse, one
// sentence per problem; empty when it holds.
std::vector<std::string> verifySignature(const Bytes& file, std::size_t offset, std::size_t size);

}  // namespace hushwall::macho
