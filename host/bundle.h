// Bundles: the identifier of the running process's main bundle, and the path
// of a bundle found at a given place.
#ifndef HUSHWALL_HOST_BUNDLE_H_
#define HUSHWALL_HOST_BUNDLE_H_

#include "host/text.h"

namespace hushwall::host {

class Bundles {
 public:
  virtual ~Bundles() = default;
  // [[NSBundle mainBundle] bundleIdentifier]; absent when the process's
  // bundle has none.
  virtual OptText mainBundleIdentifier() = 0;
  // [[NSBundle bundleWithPath:path] bundlePath]: the path when a bundle (a
  // folder) is there, absent otherwise.
  virtual OptText bundlePath(const Text& devicePath) = 0;
  // NSSearchPathForDirectoriesInDomains(NSDocumentDirectory,
  // NSUserDomainMask, YES), first entry: the process's documents folder.
  virtual OptText documentsDirectory() = 0;
};

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_BUNDLE_H_
