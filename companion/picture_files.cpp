#include "companion/picture_files.h"

#include <cstdlib>
#include <limits>
#include <optional>
#include <vector>

#include "model/paths.h"

namespace hushwall::companion {
namespace {

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool isOrdinaryName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

std::string join(const std::string& folder, const std::string& name) { return folder + "/" + name; }

bool isFolder(host::FileSystem& files, const std::string& devicePath) {
  return files.contentsOfDirectory(host::T(devicePath)).has_value();
}

// A file, not a folder: removeItem would take a folder with all it holds.
bool removeFile(host::FileSystem& files, const std::string& devicePath) {
  const host::Text path = host::T(devicePath);
  if (!files.fileExists(path) || isFolder(files, devicePath)) return false;
  return files.removeItem(path);
}

// The SECONDS of a picture's name, as the library prints them ("%f");
// infinity for anything else, which is then never old enough to remove.
double savedAt(const std::string& seconds) {
  if (seconds.empty() || seconds.find_first_not_of("0123456789.") != std::string::npos) {
    return std::numeric_limits<double>::infinity();
  }
  return std::strtod(seconds.c_str(), nullptr);
}

}  // namespace

bool isPicturePath(const std::string& devicePath) {
  const std::string prefix = std::string(kDataDirectory) + "/";
  if (devicePath.compare(0, prefix.size(), prefix) != 0) return false;
  const std::string rest = devicePath.substr(prefix.size());
  const std::size_t slash = rest.find('/');
  if (slash == std::string::npos) return false;
  const std::string folder = rest.substr(0, slash), name = rest.substr(slash + 1);
  return isOrdinaryName(folder) && isOrdinaryName(name) && endsWith(name, ".png");
}

bool removePicture(host::FileSystem& files, const std::string& devicePath) {
  if (!isPicturePath(devicePath)) return false;
  return removeFile(files, devicePath);
}

int removePicturesSavedBefore(host::FileSystem& files, double savedBefore) {
  const std::string data = kDataDirectory;
  std::optional<std::vector<host::Text>> folders = files.contentsOfDirectory(host::T(data));
  if (!folders) return 0;
  int removed = 0;
  for (const host::Text& folderName : *folders) {
    const std::string name = host::toUtf8(folderName), folder = join(data, name);
    if (!isOrdinaryName(name)) continue;
    std::optional<std::vector<host::Text>> contents = files.contentsOfDirectory(host::T(folder));
    if (!contents) continue;  // the database and its journals
    for (const host::Text& fileName : *contents) {
      const std::string file = host::toUtf8(fileName);
      if (file.compare(0, name.size() + 1, name + "-") == 0 && endsWith(file, ".png") &&
          savedAt(file.substr(name.size() + 1, file.size() - name.size() - 5)) < savedBefore &&
          removeFile(files, join(folder, file))) {
        ++removed;
      }
    }
  }
  return removed;
}

}  // namespace hushwall::companion
