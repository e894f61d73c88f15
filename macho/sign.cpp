#include "macho/sign.h"

#include "macho/code_signature.h"
#include "macho/image.h"

namespace hushwall::macho {
namespace {

constexpr std::uint32_t kCodeSignatureCommandSize = 16;  // cmd, cmdsize, dataoff, datasize
// Segments are laid out in 16 KiB units on arm64; __LINKEDIT's memory
// size is rounded to one so that it still covers what the file holds.
constexpr std::uint64_t kSegmentAlign = 0x4000;

// Where the new signature will start, and the load command that points at
// it: the old signature's place, or a new command after the others.
std::size_t makeRoom(Bytes& file, const Image& image, const Segment& linkedit) {
  if (const auto command = image.find(kCodeSignature)) {
    if (command->size != kCodeSignatureCommandSize)
      throw FormatError("an LC_CODE_SIGNATURE of the wrong size");
    const std::uint32_t dataoff = le32(file, command->offset + 8);
    if (dataoff < linkedit.fileoff || dataoff > file.size()) {
      throw FormatError("the old signature lies outside __LINKEDIT");
    }
    file.resize(dataoff);  // the old signature goes
    return command->offset;
  }
  if (linkedit.fileoff + linkedit.filesize != file.size()) {
    throw FormatError("bytes follow __LINKEDIT; the signature must be last");
  }
  const std::size_t at = image.commandsEnd;
  if (at + kCodeSignatureCommandSize > image.firstContent()) {
    throw FormatError(
        "no room for LC_CODE_SIGNATURE after the load commands (link with -headerpad)");
  }
  putLe(file, at, kCodeSignature, 4);
  putLe(file, at + 4, kCodeSignatureCommandSize, 4);
  putLe(file, 16, le32(file, 16) + 1, 4);                          // ncmds
  putLe(file, 20, le32(file, 20) + kCodeSignatureCommandSize, 4);  // sizeofcmds
  // The signature starts on a 16-byte boundary, as Apple's linker puts it.
  file.resize((file.size() + 15) / 16 * 16, 0);
  return at;
}

}  // namespace

Bytes sign(Bytes file, const std::string& identifier) {
  const Image image = parseImage(file);
  const Segment* linkedit = image.segment("__LINKEDIT");
  if (linkedit == nullptr) throw FormatError("no __LINKEDIT segment to hold the signature");
  for (const Segment& s : image.segments) {
    if (&s != linkedit && s.fileoff + s.filesize > linkedit->fileoff && s.filesize > 0) {
      throw FormatError(s.name + " lies after __LINKEDIT");
    }
  }
  const std::size_t command = makeRoom(file, image, *linkedit);
  const std::size_t codeLimit = file.size();
  const std::size_t size = signatureSize(codeLimit, identifier);
  putLe(file, command + 8, codeLimit, 4);  // dataoff
  putLe(file, command + 12, size, 4);      // datasize
  const std::uint64_t filesize = codeLimit + size - linkedit->fileoff;
  putLe(file, linkedit->commandOffset + 48, filesize, 8);
  putLe(file, linkedit->commandOffset + 32,
        (filesize + kSegmentAlign - 1) / kSegmentAlign * kSegmentAlign, 8);
  const Bytes signature = signatureFor(file, codeLimit, identifier);
  file.insert(file.end(), signature.begin(), signature.end());
  return file;
}

}  // namespace hushwall::macho
