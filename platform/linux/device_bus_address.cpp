#include "platform/linux/device_bus_address.h"

#include <sys/un.h>

#include <cstdio>
#include <stdexcept>

namespace hushwall::linux_platform {

std::string deviceBusSocketPath(const std::string& deviceRootNativePath) {
  std::string path = deviceRootNativePath + "/var/run/hushwall/bus.sock";
  constexpr std::size_t kMaxPath = sizeof(sockaddr_un{}.sun_path) - 1;
  if (path.size() > kMaxPath) {
    throw std::invalid_argument("device root too long for its bus socket: \"" + path + "\" is " +
                                std::to_string(path.size()) + " bytes, unix sockets allow " +
                                std::to_string(kMaxPath));
  }
  return path;
}

std::string deviceBusAddress(const std::string& deviceRootNativePath) {
  std::string address = "unix:path=";
  for (unsigned char c : deviceBusSocketPath(deviceRootNativePath)) {
    bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                 c == '-' || c == '_' || c == '/' || c == '.' || c == '\\' || c == '*';
    if (plain) {
      address += static_cast<char>(c);
    } else {
      char escaped[4];
      std::snprintf(escaped, sizeof escaped, "%%%02x", c);
      address += escaped;
    }
  }
  return address;
}

}  // namespace hushwall::linux_platform
