#include "platform/linux/dbus_daemon.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>

#include "platform/linux/device_bus_address.h"

namespace hushwall::linux_platform {
namespace {

std::string xmlEscaped(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      default: out += c;
    }
  }
  return out;
}

// A bus like a session bus, open to everyone on the device: any process may
// send to anyone, own any name and watch all traffic.
std::string configFor(const std::string& address) {
  return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
         " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
         "<busconfig>\n"
         "  <type>session</type>\n"
         "  <listen>" + xmlEscaped(address) + "</listen>\n"
         "  <auth>EXTERNAL</auth>\n"
         "  <policy context=\"default\">\n"
         "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
         "    <allow eavesdrop=\"true\"/>\n"
         "    <allow own=\"*\"/>\n"
         "  </policy>\n"
         "</busconfig>\n";
}

// Reads the line the daemon prints once it listens; empty when it exits or
// stays silent for `timeoutMs`.
std::string readReadyLine(int fd, int timeoutMs) {
  std::string line;
  char c;
  for (;;) {
    pollfd p{fd, POLLIN, 0};
    int ready = ::poll(&p, 1, timeoutMs);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return {};
    ssize_t n = ::read(fd, &c, 1);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return {};
    if (c == '\n') return line;
    line += c;
  }
}

// The root itself is the caller's to name; it is made when missing, as
// the bus is often the first thing a new device has.
DeviceRoot madeRoot(const std::string& path) {
  std::error_code ignored;
  std::filesystem::create_directories(path, ignored);
  return DeviceRoot(path);
}

}  // namespace

DeviceBus::DeviceBus(const std::string& deviceRootNativePath)
    : root_(madeRoot(deviceRootNativePath)),
      socketPath_(deviceBusSocketPath(deviceRootNativePath)),
      logPath_(root_.joined(std::string(kBusFolder) + "/bus.log")),
      address_(deviceBusAddress(deviceRootNativePath)) {
  // The folder, the config and the log are made inside the root, none
  // through a link. The daemon reads the config by its name, which also
  // tells which device a running daemon serves.
  const std::string config = std::string(kBusFolder) + "/bus.conf";
  root_.makeDirectories(kBusFolder);
  root_.writeAtomically(config, configFor(address_));
  Fd configFd = root_.open(config, kReadFlags);
  Fd logFd = root_.open(std::string(kBusFolder) + "/bus.log",
                        O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_NOCTTY, 0644);
  struct stat configStat {}, logStat {};
  int pipeFds[2];
  if (!configFd || !logFd || ::fstat(configFd.get(), &configStat) != 0 || !S_ISREG(configStat.st_mode) ||
      ::fstat(logFd.get(), &logStat) != 0 || !S_ISREG(logStat.st_mode) || ::pipe2(pipeFds, O_CLOEXEC) != 0) {
    throw std::runtime_error("cannot prepare dbus-daemon for " + socketPath_ +
                             ": its config or log is not a regular file inside the root");
  }
  std::string printAddress = "--print-address=" + std::to_string(pipeFds[1]);
  std::string configFile = "--config-file=" + root_.joined(config);
  configFd = Fd();
  const pid_t parent = ::getpid();
  pid_ = ::fork();
  if (pid_ == 0) {
    // The bus dies with its device. Destructors and the simulator's signal
    // handlers stop it on every ending they see, but not when the device's
    // process is killed outright (SIGKILL): a bus left running would take
    // posts for a device that has no apps any more. The kernel sends the
    // signal when the thread that forked ends, so the bus must be started
    // from a thread that lives as long as the device (the main thread). The
    // setting survives exec; the parent may have died before it was made.
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) ::_exit(127);
    ::fcntl(pipeFds[1], F_SETFD, 0);  // the daemon writes its address here
    ::dup2(logFd.get(), STDOUT_FILENO);
    ::dup2(logFd.get(), STDERR_FILENO);
    ::execl("/usr/bin/dbus-daemon", "dbus-daemon", "--nofork", "--nopidfile", configFile.c_str(),
            printAddress.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
  }
  ::close(pipeFds[1]);
  std::string printed = pid_ > 0 ? readReadyLine(pipeFds[0], 10000) : std::string();
  ::close(pipeFds[0]);
  if (printed.empty()) {
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, nullptr, 0);
    }
    throw std::runtime_error("dbus-daemon did not start listening on " + socketPath_ +
                             "; see " + logPath_);
  }
}

DeviceBus::~DeviceBus() {
  ::kill(pid_, SIGTERM);
  while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
  for (const char* name : {"/bus.sock", "/bus.conf"}) {
    try {
      root_.removeAll(std::string(kBusFolder) + name);
    } catch (const DeviceFileError&) {
      // A file that cannot be removed is left; the next bus replaces it.
    }
  }
}

}  // namespace hushwall::linux_platform
