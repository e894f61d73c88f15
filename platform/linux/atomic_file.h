// Writing a whole file so that readers see either the old content or the new
// one, never a half-written file: the settings bundle and the address book
// are rewritten while other processes may be reading them.
#ifndef HUSHWALL_PLATFORM_LINUX_ATOMIC_FILE_H_
#define HUSHWALL_PLATFORM_LINUX_ATOMIC_FILE_H_

#include <string>
#include <string_view>

namespace hushwall::linux_platform {

// Writes `bytes` to a temporary file in the same directory and renames it over
// `nativePath`. The directory must exist. Throws std::runtime_error naming the
// path and the system's reason when anything fails; the temporary file is
// removed then and the old file is left as it was.
void writeFileAtomically(const std::string& nativePath, std::string_view bytes);

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_ATOMIC_FILE_H_
