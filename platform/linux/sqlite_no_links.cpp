#include "platform/linux/sqlite_no_links.h"

#include <sqlite3.h>

#include <mutex>

namespace hushwall::linux_platform {
namespace {

sqlite3_vfs* systemVfs = nullptr;
sqlite3_vfs noLinks;

// SQLite resolves the path itself, one component at a time, and says so
// when it met a link; SQLITE_OPEN_NOFOLLOW turns exactly that answer into a
// refusal, which this does for every open.
int fullPathname(sqlite3_vfs*, const char* name, int size, char* out) {
  int rc = systemVfs->xFullPathname(systemVfs, name, size, out);
  return rc == SQLITE_OK_SYMLINK ? SQLITE_CANTOPEN_SYMLINK : rc;
}

}  // namespace

void refuseLinkedDatabases() {
  static std::once_flag once;
  std::call_once(once, [] {
    systemVfs = sqlite3_vfs_find(nullptr);
    if (systemVfs == nullptr) return;
    noLinks = *systemVfs;  // the same methods and their app data
    noLinks.zName = "hushwall-no-links";
    noLinks.pNext = nullptr;
    noLinks.xFullPathname = fullPathname;
    sqlite3_vfs_register(&noLinks, 1);
  });
}

}  // namespace hushwall::linux_platform
