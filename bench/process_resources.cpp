#include "bench/process_resources.h"

#include <filesystem>
#include <fstream>
#include <string>

namespace hushwall::bench {

ProcessResources currentProcessResources() {
  ProcessResources resources;
  std::error_code ec;
  for (auto it = std::filesystem::directory_iterator("/proc/self/fd", ec);
       !ec && it != std::filesystem::directory_iterator(); it.increment(ec)) {
    ++resources.openDescriptors;
  }
  // The directory listing held one descriptor of its own while counting.
  if (resources.openDescriptors > 0) --resources.openDescriptors;

  std::ifstream status("/proc/self/status");
  std::string key;
  while (status >> key) {
    if (key == "VmRSS:") {
      status >> resources.residentKiB;
      break;
    }
    std::getline(status, key);
  }
  return resources;
}

}  // namespace hushwall::bench
