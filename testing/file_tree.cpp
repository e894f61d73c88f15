#include "testing/file_tree.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace hushwall::testing {

std::string fileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::map<std::string, std::string> treeSnapshot(const std::string& directory) {
  namespace fs = std::filesystem;
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    files[entry.path()] = entry.is_symlink()     ? "-> " + fs::read_symlink(entry.path()).string()
                          : entry.is_directory() ? "/"
                                                 : fileBytes(entry.path());
  }
  return files;
}

}  // namespace hushwall::testing
