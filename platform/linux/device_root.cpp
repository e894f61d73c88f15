#include "platform/linux/device_root.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <random>

namespace hushwall::linux_platform {
namespace {

std::atomic<bool> noOpenat2{false};

// openat with O_NOFOLLOW, failing with ELOOP for a link as openat2 does
// (with O_DIRECTORY the kernel says ENOTDIR for one instead).
int openNoFollow(int dir, const std::string& name, int flags, mode_t mode) {
  int fd = ::openat(dir, name.c_str(), flags | O_NOFOLLOW, mode);
  struct stat st {};
  if (fd < 0 && errno == ENOTDIR) {
    bool link = ::fstatat(dir, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(st.st_mode);
    errno = link ? ELOOP : ENOTDIR;
  }
  return fd;
}

// One component at a time, none of them a link: what openat2 does in one
// call, for kernels without it.
int openByComponents(int rootFd, const std::string& relative, int flags, mode_t mode) {
  Fd dir(::fcntl(rootFd, F_DUPFD_CLOEXEC, 0));
  if (!dir) return -1;
  std::string_view rest = relative;
  for (;;) {
    std::size_t slash = rest.find('/');
    std::string component(rest.substr(0, slash));
    if (slash == std::string_view::npos) return openNoFollow(dir.get(), component, flags, mode);
    rest.remove_prefix(slash + 1);
    Fd next(openNoFollow(dir.get(), component, O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0));
    if (!next) return -1;
    dir = std::move(next);
  }
}

int openBeneath(int rootFd, const std::string& relative, int flags, mode_t mode) {
  const std::string path = relative.empty() ? "." : relative;
  flags |= O_CLOEXEC;
  if (!noOpenat2.load(std::memory_order_relaxed)) {
    open_how how{};
    how.flags = static_cast<std::uint64_t>(flags);
    how.mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? mode : 0;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    long fd = ::syscall(SYS_openat2, rootFd, path.c_str(), &how, sizeof how);
    if (fd >= 0 || errno != ENOSYS) return static_cast<int>(fd);
    noOpenat2.store(true, std::memory_order_relaxed);
  }
  return openByComponents(rootFd, path, flags, mode);
}

std::string randomSuffix() {
  static thread_local std::mt19937_64 random{std::random_device{}()};
  const char* digits = "0123456789abcdefghijklmnopqrstuvwxyz";
  std::string s;
  for (int i = 0; i < 10; ++i) s += digits[random() % 36];
  return s;
}

bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      if (n == 0) errno = EIO;
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
  return true;
}

// Everything inside the folder `dir`, then the folder's entries themselves;
// a link is an entry like any other and is removed, never followed.
bool removeEntriesOf(int dir) {
  Fd copy(::openat(dir, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  DIR* stream = copy ? ::fdopendir(copy.get()) : nullptr;
  if (stream == nullptr) return false;
  copy.release();
  bool ok = true;
  std::vector<std::string> names;
  while (dirent* entry = ::readdir(stream)) {
    std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(std::move(name));
  }
  ::closedir(stream);
  for (const std::string& name : names) {
    struct stat st {};
    if (::fstatat(dir, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) continue;
    if (S_ISDIR(st.st_mode)) {
      Fd inner(::openat(dir, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
      ok = inner && removeEntriesOf(inner.get()) && ok;
      ok = ::unlinkat(dir, name.c_str(), AT_REMOVEDIR) == 0 && ok;
    } else {
      ok = ::unlinkat(dir, name.c_str(), 0) == 0 && ok;
    }
  }
  return ok;
}

}  // namespace

Fd::~Fd() {
  if (fd_ >= 0) ::close(fd_);
}

Fd& Fd::operator=(Fd&& other) noexcept {
  if (this != &other) {
    if (fd_ >= 0) ::close(fd_);
    fd_ = other.release();
  }
  return *this;
}

bool DeviceFileError::missing() const { return error_ == ENOENT || error_ == ENOTDIR; }

std::string readRegularFileAt(int dirfd, const std::string& path, std::size_t maxBytes, int flags) {
  Fd file(::openat(dirfd, path.c_str(), kReadFlags | flags));
  if (!file) {
    int error = errno;
    throw DeviceFileError("cannot open " + path + ": " +
                              (error == ELOOP ? "a symbolic link is not followed here"
                                              : std::strerror(error)),
                          error);
  }
  return readRegularFile(file.get(), path, maxBytes);
}

std::string readRegularFile(int fd, const std::string& path, std::size_t maxBytes) {
  struct stat st {};
  if (::fstat(fd, &st) != 0) {
    int error = errno;
    throw DeviceFileError(path + ": " + std::strerror(error), error);
  }
  if (!S_ISREG(st.st_mode)) {
    const char* kind = S_ISDIR(st.st_mode)    ? "a directory"
                       : S_ISFIFO(st.st_mode) ? "a FIFO"
                       : S_ISSOCK(st.st_mode) ? "a socket"
                                              : "a device";
    throw DeviceFileError(path + " is " + kind + ", not a regular file", EINVAL);
  }
  if (static_cast<std::uint64_t>(st.st_size) > maxBytes) {
    throw DeviceFileError(path + " is " + std::to_string(st.st_size) + " bytes, more than the " +
                              std::to_string(maxBytes) + " such a file may hold",
                          EFBIG);
  }
  // The size is only a hint: the file may grow while it is read.
  std::string bytes(static_cast<std::size_t>(st.st_size), '\0');
  std::size_t done = 0;
  for (;;) {
    if (done == bytes.size() && done < maxBytes) bytes.resize(std::min(maxBytes, done + 4096));
    if (done == maxBytes) {
      char more = 0;
      if (::read(fd, &more, 1) > 0) {
        throw DeviceFileError(path + " grew past the " + std::to_string(maxBytes) +
                                  " bytes such a file may hold while it was read",
                              EFBIG);
      }
      break;
    }
    ssize_t n = ::read(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      int error = errno;
      throw DeviceFileError("cannot read " + path + ": " + std::strerror(error), error);
    }
    if (n == 0) break;
    done += static_cast<std::size_t>(n);
  }
  bytes.resize(done);
  return bytes;
}

DeviceRoot::DeviceRoot(const std::string& nativeRoot) {
  fd_ = Fd(::open(nativeRoot.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!fd_) {
    int error = errno;
    throw DeviceFileError("device root " + nativeRoot + ": " + std::strerror(error), error);
  }
  char* real = ::realpath(nativeRoot.c_str(), nullptr);
  path_ = real != nullptr ? real : nativeRoot;
  std::free(real);
  while (path_.size() > 1 && path_.back() == '/') path_.pop_back();
}

void DeviceRoot::useOpenat2(bool use) { noOpenat2.store(!use); }

std::string DeviceRoot::relative(std::string_view path) {
  std::string resolved;
  while (!path.empty()) {
    std::size_t slash = path.find('/');
    std::string_view component = path.substr(0, slash);
    path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    if (component.empty() || component == ".") continue;
    if (component == "..") {
      std::size_t cut = resolved.rfind('/');
      resolved.erase(cut == std::string::npos ? 0 : cut);
    } else {
      if (!resolved.empty()) resolved += '/';
      resolved.append(component);
    }
  }
  return resolved;
}

std::string DeviceRoot::joined(std::string_view devicePath) const {
  std::string rel = relative(devicePath);
  return path_ == "/" ? "/" + rel : rel.empty() ? path_ + "/" : path_ + "/" + rel;
}

Fd DeviceRoot::open(std::string_view devicePath, int flags, mode_t mode) const {
  return Fd(openBeneath(fd_.get(), relative(devicePath), flags, mode));
}

Fd DeviceRoot::openParent(std::string_view devicePath, std::string* name) const {
  std::string rel = relative(devicePath);
  std::size_t slash = rel.rfind('/');
  *name = slash == std::string::npos ? rel : rel.substr(slash + 1);
  if (name->empty()) {
    errno = EINVAL;
    return Fd();
  }
  return Fd(openBeneath(fd_.get(), slash == std::string::npos ? "" : rel.substr(0, slash),
                        O_RDONLY | O_DIRECTORY, 0));
}

std::string DeviceRoot::failure(const std::string& what, std::string_view devicePath, int error) const {
  std::string reason = error == ELOOP || error == EXDEV
                           ? "a symbolic link on the way or in its place (links are not followed "
                             "inside a device root)"
                           : std::strerror(error);
  return what + " " + joined(devicePath) + ": " + reason;
}

void DeviceRoot::failed(const std::string& what, std::string_view devicePath) const {
  const int error = errno;  // before anything else may change it
  throw DeviceFileError(failure(what, devicePath, error), error);
}

std::string DeviceRoot::fileForSqlite(std::string_view devicePath) const {
  std::string name;
  Fd dir = openParent(devicePath, &name);
  if (!dir) failed("cannot open", devicePath);
  struct stat st {};
  if (::fstatat(dir.get(), name.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(st.st_mode)) {
    throw DeviceFileError(failure("cannot open", devicePath, ELOOP), ELOOP);
  }
  return joined(devicePath);
}

void DeviceRoot::makeDirectories(std::string_view devicePath) const {
  std::string rel = relative(devicePath), done;
  std::string_view rest = rel;
  while (!rest.empty()) {
    std::size_t slash = rest.find('/');
    done += (done.empty() ? "" : "/") + std::string(rest.substr(0, slash));
    rest.remove_prefix(slash == std::string_view::npos ? rest.size() : slash + 1);
    std::string name;
    Fd parent = openParent(done, &name);
    if (!parent || (::mkdirat(parent.get(), name.c_str(), 0755) != 0 && errno != EEXIST)) {
      failed("cannot make the folder", done);
    }
  }
  // Whatever was there already must be a folder reached without a link.
  if (!open(rel, O_RDONLY | O_DIRECTORY)) {
    failed("cannot make the folder", devicePath);
  }
}

std::string DeviceRoot::readRegularFile(std::string_view devicePath, std::size_t maxBytes) const {
  std::string name;
  Fd dir = openParent(devicePath, &name);
  if (!dir) failed("cannot open", devicePath);
  try {
    return readRegularFileAt(dir.get(), name, maxBytes, O_NOFOLLOW);
  } catch (const DeviceFileError& e) {
    if (e.error() != EINVAL && e.error() != EFBIG) {
      throw DeviceFileError(failure("cannot read", devicePath, e.error()), e.error());
    }
    throw DeviceFileError(joined(devicePath) + std::string(e.what()).substr(name.size()), e.error());
  }
}

void DeviceRoot::writeAtomically(std::string_view devicePath, std::string_view bytes) const {
  std::string name;
  Fd dir = openParent(devicePath, &name);
  if (!dir) failed("cannot write", devicePath);
  struct stat st {};
  if (::fstatat(dir.get(), name.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(st.st_mode)) {
    throw DeviceFileError(failure("cannot write", devicePath, ELOOP), ELOOP);
  }
  std::string temp;
  Fd file;
  for (int attempt = 0; attempt < 100 && !file; ++attempt) {
    temp = name + ".tmp-" + randomSuffix();
    file = Fd(::openat(dir.get(), temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                       0644));
    if (!file && errno != EEXIST) break;
  }
  if (!file) failed("cannot create a temporary file for", devicePath);
  int error = 0;
  // Other processes (the messenger, SpringBoard) read these files, whatever
  // the umask of the one that writes them.
  if (::fchmod(file.get(), 0644) != 0 || !writeAll(file.get(), bytes) || ::fsync(file.get()) != 0) {
    error = errno;
  }
  if (::close(file.release()) != 0 && error == 0) error = errno;
  if (error == 0 && ::renameat(dir.get(), temp.c_str(), dir.get(), name.c_str()) != 0) error = errno;
  if (error != 0) {
    ::unlinkat(dir.get(), temp.c_str(), 0);
    throw DeviceFileError(failure("cannot write", devicePath, error), error);
  }
}

bool DeviceRoot::createExclusive(std::string_view devicePath, std::string_view bytes) const {
  Fd file = open(devicePath, O_WRONLY | O_CREAT | O_EXCL, 0644);
  if (!file && errno == EEXIST) return false;
  if (!file || !writeAll(file.get(), bytes)) {
    failed("cannot write", devicePath);
  }
  return true;
}

bool DeviceRoot::removeAll(std::string_view devicePath) const {
  std::string name;
  Fd dir = openParent(devicePath, &name);
  if (!dir) {
    if (errno == ENOENT) return false;
    failed("cannot remove", devicePath);
  }
  struct stat st {};
  if (::fstatat(dir.get(), name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) return false;
    failed("cannot remove", devicePath);
  }
  bool ok = true;
  if (S_ISDIR(st.st_mode)) {
    Fd inner(::openat(dir.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    ok = inner && removeEntriesOf(inner.get());
  }
  if (!ok || ::unlinkat(dir.get(), name.c_str(), S_ISDIR(st.st_mode) ? AT_REMOVEDIR : 0) != 0) {
    failed("cannot remove", devicePath);
  }
  return true;
}

std::vector<std::string> DeviceRoot::list(std::string_view devicePath) const {
  Fd dir = open(devicePath, O_RDONLY | O_DIRECTORY);
  DIR* stream = dir ? ::fdopendir(dir.get()) : nullptr;
  if (stream == nullptr) failed("cannot list", devicePath);
  dir.release();
  std::vector<std::string> names;
  errno = 0;
  while (dirent* entry = ::readdir(stream)) {
    std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(std::move(name));
  }
  int error = errno;
  ::closedir(stream);
  // A failed step ends the listing as well: a partial listing is no listing.
  if (error != 0) throw DeviceFileError(failure("cannot list", devicePath, error), error);
  return names;
}

}  // namespace hushwall::linux_platform
