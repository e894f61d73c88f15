// SQLite files of a simulated device opened only by a path without links.
//
// The library opens its database with plain sqlite3_open, as the phone's
// design fixes it, so it cannot ask for SQLITE_OPEN_NOFOLLOW itself. A device
// process makes that the rule for every open instead: the default VFS
// becomes the system's own with one change, a path that holds a symbolic
// link anywhere is refused (SQLITE_CANTOPEN), as SQLITE_OPEN_NOFOLLOW
// refuses it. SQLite opens journals beside the database with O_NOFOLLOW
// already. The device root's own path is canonical (device_root.h), so only
// a link planted inside the root is refused.
#ifndef HUSHWALL_PLATFORM_LINUX_SQLITE_NO_LINKS_H_
#define HUSHWALL_PLATFORM_LINUX_SQLITE_NO_LINKS_H_

namespace hushwall::linux_platform {

// Installs the VFS as the default, once per process; later calls do nothing.
// Call it before the first database is opened.
void refuseLinkedDatabases();

}  // namespace hushwall::linux_platform

#endif  // HUSHWALL_PLATFORM_LINUX_SQLITE_NO_LINKS_H_
