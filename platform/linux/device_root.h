// A simulated device's root directory, held open, and every file operation
// on a device path resolved inside it by the kernel.
//
// The root is the device's "/" as a chroot makes a directory one: ".." stops
// at it (the path is resolved lexically first, so "/.." is "/"). Below the
// root no symbolic link is followed, whether it points inside the root or
// out of it: the device's own processes and tools never make one, so a link
// there was planted, and SQLite, which opens its database and journals by
// path text, can only be kept from following links by refusing them all
// (SQLITE_OPEN_NOFOLLOW). One rule for every file then: a path with a link
// anywhere below the root fails with ELOOP, and nothing the link names is
// read, written or removed. (A link as the last component of a removal is
// removed itself, as a folder's entries are: that touches nothing beyond.)
//
// Paths are opened with openat2(RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS |
// RESOLVE_NO_MAGICLINKS) relative to the root's descriptor; on a kernel
// without openat2 (before 5.6), one component at a time with
// openat(O_NOFOLLOW), which refuses the same paths.
#ifndef HUSHWALL_PLATFORM_LINUX_DEVICE_ROOT_H_
#define HUSHWALL_PLATFORM_LINUX_DEVICE_ROOT_H_

#include <fcntl.h>
#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/plist_limits.h"

namespace hushwall::linux_platform {

// A file descriptor, closed when it goes.
class Fd {
 public:
  Fd() = default;
  explicit Fd(int fd) : fd_(fd) {}
  ~Fd();
  Fd(Fd&& other) noexcept : fd_(other.release()) {}
  Fd& operator=(Fd&& other) noexcept;
  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  int release() {
    int fd = fd_;
    fd_ = -1;
    return fd;
  }

 private:
  int fd_ = -1;
};

// A file of the device that cannot be had. `missing()` when nothing is
// there (or a folder on the way is missing): callers that treat a missing
// file as an empty one tell it apart from a refused one.
class DeviceFileError : public std::runtime_error {
 public:
  DeviceFileError(const std::string& message, int error)
      : std::runtime_error(message), error_(error) {}
  int error() const { return error_; }
  bool missing() const;

 private:
  int error_;
};

// The files this system reads whole are small; these bound what is read.
// A settings file past the loader's own bound is refused unread.
inline constexpr std::size_t kMaxSettingsFileBytes = kMaxPlistBytes;
inline constexpr std::size_t kMaxContactsFileBytes = 16 << 20;
inline constexpr std::size_t kMaxSmallFileBytes = 64 << 10;  // bus config, device marker

// Reads a regular file whole: opened with O_NONBLOCK (a FIFO would
// otherwise wait for a writer), then checked with fstat. Throws
// DeviceFileError for anything but a regular file of at most `maxBytes`.
// `dirfd` and `path` as for openat; `flags` are added to the open's (give
// O_NOFOLLOW to refuse a link as the last component).
std::string readRegularFileAt(int dirfd, const std::string& path, std::size_t maxBytes,
                              int flags = 0);
// The flags of that open: read-only, without waiting, no controlling tty.
inline constexpr int kReadFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
// The same for a file already open at `fd` (`path` names it in messages).
std::string readRegularFile(int fd, const std::string& path, std::size_t maxBytes);

class DeviceRoot {
 public:
  // Opens `nativeRoot`, which must be a directory (the links in the root's
  // own path are followed: the user names it). Throws DeviceFileError.
  explicit DeviceRoot(const std::string& nativeRoot);

  // The root's canonical native path (no link, no trailing "/").
  const std::string& path() const { return path_; }
  int fd() const { return fd_.get(); }

  // A device path resolved lexically, relative to the root: "." and empty
  // components dropped, ".." taking one away but never the root. "" is
  // the root itself.
  static std::string relative(std::string_view devicePath);
  // The root's path joined with relative(devicePath), for messages and for
  // programs that open by name; checked by nothing.
  std::string joined(std::string_view devicePath) const;

  // openat2 relative to the root; -1 and errno on failure (ELOOP for a link
  // on the way or at the end, ENOENT, ...). O_CLOEXEC is always added.
  Fd open(std::string_view devicePath, int flags, mode_t mode = 0) const;
  // The folder that holds the path's last component, and that component's
  // name ("" for the root itself, which has no parent inside the root).
  Fd openParent(std::string_view devicePath, std::string* name) const;

  // The native path of a file, for SQLite: every folder on the way is a real
  // folder and the file is not a link (it need not exist). Throws
  // DeviceFileError otherwise; SQLite then opens it with
  // SQLITE_OPEN_NOFOLLOW, which refuses a link put in meanwhile.
  std::string fileForSqlite(std::string_view devicePath) const;

  // The following throw DeviceFileError, with the device path and the
  // system's reason in the message.
  // Creates the folder and every missing one above it.
  void makeDirectories(std::string_view devicePath) const;
  std::string readRegularFile(std::string_view devicePath, std::size_t maxBytes) const;
  // A temporary file beside it, renamed over it; the folder must exist. A
  // link in its place is refused rather than replaced.
  void writeAtomically(std::string_view devicePath, std::string_view bytes) const;
  // Creates the file only if nothing is there (O_EXCL); false when
  // something is.
  bool createExclusive(std::string_view devicePath, std::string_view bytes) const;
  // The file or folder and everything in it; links inside are removed, not
  // followed. False when nothing was there.
  bool removeAll(std::string_view devicePath) const;
  // The names in a folder, without "." and "..".
  std::vector<std::string> list(std::string_view devicePath) const;

  // What went wrong with `devicePath`, for a message.
  std::string failure(const std::string& what, std::string_view devicePath, int error) const;

  // Resolves as on a kernel without openat2 from now on, or again with it;
  // for the tests, which run both ways over the same paths.
  static void useOpenat2(bool use);
  // Throws DeviceFileError for errno as it is.
  [[noreturn]] void failed(const std::string& what, std::string_view devicePath) const;

 private:
  std::string path_;
  Fd fd_;
};

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_DEVICE_ROOT_H_
