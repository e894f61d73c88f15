// Ad-hoc signing of a thin arm64 Mach-O file for iOS 7 and 8.
#pragma once

#include <string>

#include "macho/bytes.h"

namespace hushwall::macho {

// The file with a SHA-1 ad-hoc signature (code_signature.h) in place of
// the one it had, or added when it had none. The signature goes at the end
// of __LINKEDIT, which must be the last thing in the file; LC_CODE_SIGNATURE
// and __LINKEDIT's sizes are set before the pages are hashed, since the
// load commands are code too. Throws FormatError when the file cannot take
// a signature (no __LINKEDIT, data after it, no room for the load command).
Bytes sign(Bytes file, const std::string& identifier);

}  // namespace hushwall::macho
