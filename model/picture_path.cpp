#include "model/picture_path.h"

#include "model/paths.h"

namespace hushwall {
namespace {

// The number comes from a sender's address, which anyone can choose: a
// number such as "../../../tmp/x/4917" would otherwise make folders and write
// the picture anywhere the messenger may write. The platform's path joining
// does not resolve "..", and the file system would, so the name is checked
// here, before any path reaches the file system. "." is refused as well: it
// would put the picture loose in the data directory, where no folder listing
// of the settings bundle finds it. A NUL character ends the path for the file
// system, so a number holding one would write into another number's folder.
bool namesOneFolder(const host::Text& name) {
  return name != u"." && name != u".." && name.find(u'/') == host::Text::npos &&
         name.find(u'\0') == host::Text::npos;
}

}  // namespace

PicturePath picturePath(const host::OptText& phoneNumber, double secondsSince1970) {
  PicturePath path;
  // Joining as a path component folds the doubled and trailing "/", leaving
  // <data dir>/NUMBER.
  path.folder = host::appendingPathComponent(host::T(kDataDirectory),
                                             host::formatObjects(u"/%@/", {phoneNumber}));
  path.file = host::appendingPathComponent(
      path.folder,
      host::formatObjects(u"/%@-%@.png", {phoneNumber, host::formatDouble(secondsSince1970)}));
  path.insideDataDirectory = namesOneFolder(host::describe(phoneNumber));
  return path;
}

}  // namespace hushwall
