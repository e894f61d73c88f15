// Which files under the data directory are saved pictures of blocked
// messages. The history's picture paths come from database rows that any
// process may have written, so a path is deleted only when it has the shape
// the library gives its pictures: <data directory>/<folder>/<name>.png.
#ifndef HUSHWALL_COMPANION_PICTURE_FILES_H_
#define HUSHWALL_COMPANION_PICTURE_FILES_H_

#include <string>

#include "host/file_system.h"

namespace hushwall::companion {

// True when `devicePath` is a ".png" file name directly inside a folder
// directly inside the data directory, with no "." or ".." component.
bool isPicturePath(const std::string& devicePath);

// Removes the picture file when the path is a picture path and names a file
// (not a folder). True when the file went. Folders stay, even empty: the
// messenger makes a number's folder and then saves into it, and a folder
// removed between the two would lose a picture whose row is still written.
bool removePicture(host::FileSystem& files, const std::string& devicePath);

// Removes the saved pictures in the data directory's picture folders (a
// folder's pictures are named after the folder and their time of saving:
// NUMBER/NUMBER-SECONDS.png) whose SECONDS are before `savedBefore`. The
// database, its journals, younger pictures and anything else that is not
// such a picture stay. Returns how many files went.
int removePicturesSavedBefore(host::FileSystem& files, double savedBefore);

}  // namespace hushwall::companion

#endif  // HUSHWALL_COMPANION_PICTURE_FILES_H_
