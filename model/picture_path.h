// Where a blocked picture is saved: one folder per phone number inside the
// data directory, <data dir>/NUMBER/NUMBER-SECONDS.png.
#ifndef HUSHWALL_MODEL_PICTURE_PATH_H_
#define HUSHWALL_MODEL_PICTURE_PATH_H_

#include "host/text.h"

namespace hushwall {

struct PicturePath {
  host::Text folder;  // <data dir>/NUMBER
  host::Text file;    // <data dir>/NUMBER/NUMBER-SECONDS.png, SECONDS with six decimals
  // False when NUMBER does not name one folder of the data directory: it is
  // "." or "..", or holds a "/" or a NUL character. Nothing may be created
  // or written at such a path.
  bool insideDataDirectory = false;
};

// An absent number is "(null)", as the platform prints a nil object.
PicturePath picturePath(const host::OptText& phoneNumber, double secondsSince1970);

}  // namespace hushwall

#endif  // HUSHWALL_MODEL_PICTURE_PATH_H_
