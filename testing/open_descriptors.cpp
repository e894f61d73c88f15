#include "testing/open_descriptors.h"

#include <filesystem>
#include <system_error>

namespace hushwall::testing {
namespace fs = std::filesystem;

std::size_t openDescriptorsOf(const std::string& nativeFile) {
  std::error_code ec;
  fs::path target = fs::weakly_canonical(nativeFile, ec);
  std::size_t count = 0;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd", ec)) {
    std::error_code linkError;
    fs::path points = fs::read_symlink(entry.path(), linkError);
    if (!linkError && points == target) ++count;
  }
  return count;
}

}  // namespace hushwall::testing
