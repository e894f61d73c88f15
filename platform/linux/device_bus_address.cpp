#include "platform/linux/device_bus_address.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <cerrno>
#include <stdexcept>

#include "platform/linux/device_root.h"

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

bool deviceBusIsRunning(const std::string& deviceRootNativePath) {
  const std::string socketPath = deviceBusSocketPath(deviceRootNativePath);
  // connect() takes a path and follows links: the socket is reached only
  // when neither it nor a folder on its way is one.
  const DeviceRoot root(deviceRootNativePath);
  const std::string socket = socketPath.substr(deviceRootNativePath.size());
  std::string name;
  Fd folder = root.openParent(socket, &name);
  struct stat st {};
  if (!folder && errno != ENOENT) root.failed("cannot reach", socket);
  if (!folder || ::fstatat(folder.get(), name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) return false;
  if (S_ISLNK(st.st_mode)) throw DeviceFileError(root.failure("cannot reach", socket, ELOOP), ELOOP);
  if (!S_ISSOCK(st.st_mode)) return false;
  int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, socketPath.c_str(), sizeof(address.sun_path) - 1);
  bool ok = ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
  ::close(fd);
  return ok;
}

}  // namespace hushwall::linux_platform
