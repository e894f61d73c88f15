// Building the path of a blocked picture from a phone number of any UTF-16
// (the input's bytes two at a time, little-endian; an odd last byte makes the
// number absent). A path the model accepts must name a file in one folder
// directly inside the data directory however its "." and ".." are read; only
// a number that is ".", "..", or holds "/" or NUL may be refused. Whatever the
// path, the simulated device's file system must resolve it under its root.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/fuzz_check.h"
#include "model/paths.h"
#include "model/picture_path.h"
#include "platform/linux/device_root_file_system.h"

namespace {

using hushwall::host::Text;

// The components a path names once "." and ".." are resolved as a file
// system resolves them, ".." at the top staying there.
std::vector<std::string> resolved(const std::string& path) {
  std::vector<std::string> components;
  std::size_t start = 0;
  while (start <= path.size()) {
    std::size_t end = path.find('/', start);
    if (end == std::string::npos) end = path.size();
    std::string component = path.substr(start, end - start);
    if (component == "..") {
      if (!components.empty()) components.pop_back();
    } else if (!component.empty() && component != ".") {
      components.push_back(component);
    }
    start = end + 1;
  }
  return components;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace hushwall;
  Text number;
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    number.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
  }
  const host::OptText given = size % 2 == 1 ? host::OptText() : host::OptText(number);
  const PicturePath path = picturePath(given, 1400000000.5);
  const Text name = host::describe(given);

  if (path.insideDataDirectory) {
    const std::vector<std::string> dataDirectory = resolved(kDataDirectory);
    const std::vector<std::string> folder = resolved(host::toUtf8(path.folder));
    const std::vector<std::string> file = resolved(host::toUtf8(path.file));
    HUSHWALL_FUZZ_CHECK(folder.size() <= dataDirectory.size() + 1 &&
                            std::equal(dataDirectory.begin(), dataDirectory.end(), folder.begin()),
                        "an accepted folder is not inside the data directory");
    HUSHWALL_FUZZ_CHECK(file.size() == folder.size() + 1 &&
                            std::equal(folder.begin(), folder.end(), file.begin()),
                        "an accepted picture is not directly inside its folder");
    HUSHWALL_FUZZ_CHECK(path.file.find(u'\0') == Text::npos, "an accepted path holds a NUL");
  } else {
    HUSHWALL_FUZZ_CHECK(name == u"." || name == u".." || name.find(u'/') != Text::npos ||
                            name.find(u'\0') != Text::npos,
                        "a number that names a folder was refused");
  }

  // The device's file system keeps any path, accepted or not, under its root.
  linux_platform::DeviceRootFileSystem files("/device-root");
  for (const Text& devicePath : {path.file, path.folder, number}) {
    const std::string native = files.nativePath(devicePath);
    HUSHWALL_FUZZ_CHECK(native.rfind("/device-root/", 0) == 0, "a native path left the root");
    const std::vector<std::string> inside = resolved(native.substr(std::string("/device-root").size()));
    HUSHWALL_FUZZ_CHECK(resolved(native).size() == inside.size() + 1,
                        "a native path climbs out of the root when resolved again");
  }
  return 0;
}
