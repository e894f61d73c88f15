// The device's file system, addressed by device paths.
//
// The logic names files as they are named on the device
// ("/var/mobile/Library/Preferences/Hushwall/HSWL.db"). On the device those
// are real paths; on Linux they resolve under a device root directory. SQLite
// opens files itself, so the seam also hands out the native path.
#ifndef HUSHWALL_HOST_FILE_SYSTEM_H_
#define HUSHWALL_HOST_FILE_SYSTEM_H_

#include <optional>
#include <string>
#include <vector>

#include "host/text.h"
#include "host/value.h"

namespace hushwall::host {

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // The path to hand to functions that open files themselves (sqlite3_open).
  virtual std::string nativePath(const Text& devicePath) = 0;

  // fileExistsAtPath: anything (file, folder, link target) exists there.
  virtual bool fileExists(const Text& devicePath) = 0;
  // removeItemAtPath:error: a file, or a folder with everything in it.
  virtual bool removeItem(const Text& devicePath) = 0;
  // createDirectoryAtPath:withIntermediateDirectories:YES attributes:nil error:
  virtual bool createDirectory(const Text& devicePath) = 0;
  // copyItemAtPath:toPath:error: fails when the destination exists.
  virtual bool copyItem(const Text& fromDevicePath, const Text& toDevicePath) = 0;
  // writeToFile:atomically:YES: a temporary file renamed into place.
  virtual bool writeAtomically(const Text& devicePath, const Bytes& bytes) = 0;
  // initWithContentsOfFile: of a dictionary: the property list at the path
  // (XML or binary) when its root is a dictionary; nothing when the file is
  // missing, unreadable, corrupt or has another root.
  virtual std::optional<Dict> dictionaryWithContentsOfFile(const Text& devicePath) = 0;
  // contentsOfDirectoryAtPath:error: the names in a folder (not "." or
  // ".."), in no particular order; nothing when it is not a readable folder.
  virtual std::optional<std::vector<Text>> contentsOfDirectory(const Text& devicePath) = 0;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_FILE_SYSTEM_H_
