// The phone check and the signer on any bytes: reading never goes past the
// file, and whatever the signer accepts comes out with a signature that
// verifies, every page of it.
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "fuzz/fuzz_check.h"
#include "macho/code_signature.h"
#include "macho/image.h"
#include "macho/phone_check.h"
#include "macho/sign.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace hushwall::macho;
  const Bytes file(data, data + size);
  checkForPhone(file, iosVersion(7, 0));
  Bytes signedFile;
  try {
    signedFile = sign(file, "com.example.fuzz");
  } catch (const FormatError&) {
    return 0;
  }
  const auto command = parseImage(signedFile).find(kCodeSignature);
  HUSHWALL_FUZZ_CHECK(command.has_value(), "a signed file has LC_CODE_SIGNATURE");
  const auto problems = verifySignature(signedFile, le32(signedFile, command->offset + 8),
                                        le32(signedFile, command->offset + 12));
  if (!problems.empty()) std::fprintf(stderr, "%s\n", problems.front().c_str());
  HUSHWALL_FUZZ_CHECK(problems.empty(), "what the signer accepts verifies");
  return 0;
}
