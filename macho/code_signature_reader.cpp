#include <algorithm>

#include "macho/code_signature.h"
#include "macho/sha1.h"

namespace hushwall::macho {
namespace {

// A blob inside [begin, end): its magic must be `magic` and its length,
// the second field, must fit. Returns its length.
std::size_t blobAt(const Bytes& file, std::size_t at, std::size_t end, std::uint32_t magic,
                   const char* what) {
  if (at + 8 > end) throw FormatError(std::string(what) + " is truncated");
  if (be32(file, at) != magic) throw FormatError(std::string(what) + " has the wrong magic");
  const std::size_t length = be32(file, at + 4);
  if (length < 8 || length > end - at) throw FormatError(std::string(what) + " is truncated");
  return length;
}

// The file offset of the index entry of `slot` in the SuperBlob at
// [offset, end), or 0 when there is none.
std::size_t slotOffset(const Bytes& file, std::size_t offset, std::size_t end, std::uint32_t slot) {
  if (end - offset < 12) throw FormatError("the signature's index is truncated");
  const std::uint32_t count = be32(file, offset + 8);
  if (count > (end - offset - 12) / 8) throw FormatError("the signature's index is truncated");
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t entry = offset + 12 + std::size_t{i} * 8;
    if (be32(file, entry) != slot) continue;
    const std::size_t at = offset + be32(file, entry + 4);
    if (at >= end) throw FormatError("an index entry of the signature points past its end");
    return at;
  }
  return 0;
}

}  // namespace

CodeDirectory readCodeDirectory(const Bytes& file, std::size_t offset, std::size_t size) {
  need(file, offset, size, "the code signature");
  const std::size_t end =
      offset + blobAt(file, offset, offset + size, kSuperBlobMagic, "the signature");
  const std::size_t at = slotOffset(file, offset, end, kCodeDirectorySlot);
  if (at == 0) throw FormatError("the signature has no CodeDirectory");
  const std::size_t length = blobAt(file, at, end, kCodeDirectoryMagic, "the CodeDirectory");
  if (length < 44) throw FormatError("the CodeDirectory is truncated");
  CodeDirectory cd;
  cd.offset = at;
  cd.version = be32(file, at + 8);
  cd.flags = be32(file, at + 12);
  cd.hashOffset = be32(file, at + 16);
  const std::uint32_t identOffset = be32(file, at + 20);
  cd.nSpecialSlots = be32(file, at + 24);
  cd.nCodeSlots = be32(file, at + 28);
  cd.codeLimit = be32(file, at + 32);
  cd.hashSize = file[at + 36];
  cd.hashType = file[at + 37];
  cd.pageShift = file[at + 39];
  // The kernel's own bounds: the special slots before hashOffset, the code
  // slots after it, the identifier terminated, all inside the blob.
  if (identOffset >= length) throw FormatError("the CodeDirectory's identifier is truncated");
  cd.identifier = cString(file, at + identOffset, at + length, "the CodeDirectory's identifier");
  if (cd.hashSize == 0 || cd.hashOffset > length ||
      cd.hashOffset / cd.hashSize < cd.nSpecialSlots ||
      (length - cd.hashOffset) / cd.hashSize < cd.nCodeSlots) {
    throw FormatError("the CodeDirectory's hash slots are truncated");
  }
  return cd;
}

std::vector<std::string> verifySignature(const Bytes& file, std::size_t offset, std::size_t size) {
  const CodeDirectory cd = readCodeDirectory(file, offset, size);
  std::vector<std::string> problems;
  if (cd.hashType != kHashSha1 || cd.hashSize != kSha1Size) {
    problems.push_back("its CodeDirectory uses hash type " + std::to_string(cd.hashType) + " of " +
                       std::to_string(cd.hashSize) +
                       " bytes; iOS 7 and 8 check SHA-1 (type 1, 20 bytes) only");
    return problems;
  }
  if (cd.pageShift != kPageShift)
    problems.push_back("its CodeDirectory's pages are not 4096 bytes");
  if (cd.version < kCodeDirectoryVersion)
    problems.push_back("its CodeDirectory version is older than 0x20100");
  if (cd.identifier.empty()) problems.push_back("its CodeDirectory has no identifier");
  // Everything before the signature is code: a shorter limit leaves bytes
  // unchecked, a longer one would hash the signature itself.
  if (cd.codeLimit != offset) {
    problems.push_back("its code limit " + std::to_string(cd.codeLimit) +
                       " is not where the signature starts (" + std::to_string(offset) + ")");
    return problems;
  }
  if (cd.nCodeSlots != (cd.codeLimit + kPageSize - 1) / kPageSize) {
    problems.push_back(std::to_string(cd.nCodeSlots) + " page hashes for " +
                       std::to_string(cd.codeLimit) + " bytes");
    return problems;
  }
  for (std::uint32_t page = 0; page < cd.nCodeSlots; ++page) {
    const std::size_t begin = std::size_t{page} * kPageSize;
    const Sha1 hash =
        sha1(file.data() + begin, std::min(kPageSize, std::size_t{cd.codeLimit} - begin));
    if (!std::equal(hash.begin(), hash.end(),
                    file.begin() + static_cast<std::ptrdiff_t>(cd.offset + cd.hashOffset +
                                                               std::size_t{page} * kSha1Size))) {
      problems.push_back("page " + std::to_string(page) + " (from byte " + std::to_string(begin) +
                         ") does not match its hash");
    }
  }
  // Special slot -2 binds the requirements; a mismatch fails the check of
  // the whole signature.
  const std::size_t end = offset + be32(file, offset + 4);
  const std::size_t requirements = slotOffset(file, offset, end, kRequirementsSlot);
  if (cd.nSpecialSlots >= 2 && requirements != 0) {
    const std::size_t length =
        blobAt(file, requirements, end, kRequirementsMagic, "the requirements");
    const Sha1 hash = sha1(file.data() + requirements, length);
    if (!std::equal(hash.begin(), hash.end(),
                    file.begin() +
                        static_cast<std::ptrdiff_t>(cd.offset + cd.hashOffset - 2 * kSha1Size))) {
      problems.push_back("the requirements do not match their hash");
    }
  }
  return problems;
}

}  // namespace hushwall::macho
