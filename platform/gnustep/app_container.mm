// Every app on the phone lives in a container of its own, and its documents
// directory is the container's Documents folder: WhatsApp's
// "ChatStorage.sqlite" is there. GNUstep knows no containers and answers
// with the user's home, outside the device. Once the stand-in device is
// booted, this definition comes before GNUstep's in the process (the
// stand-in library is linked ahead of gnustep-base) and answers the one
// question an app's code asks, the user's documents directory with the
// tilde expanded, with the app's container on the simulated device. Every
// other question goes on to GNUstep.
#import <Foundation/Foundation.h>

#include <dlfcn.h>

#include "host/text.h"
#include "platform/darwin/device_paths.h"
#include "platform/gnustep/stand_in_device.h"
#include "platform/linux/device_bundles.h"

namespace {

using SearchPaths = NSArray* (*)(NSSearchPathDirectory, NSSearchPathDomainMask, BOOL);

NSArray* foundationSearchPaths(NSSearchPathDirectory directory, NSSearchPathDomainMask domains,
                               BOOL expandTilde) {
  static SearchPaths next = (SearchPaths)dlsym(RTLD_NEXT, "NSSearchPathForDirectoriesInDomains");
  if (next == nullptr) return [NSArray array];
  return next(directory, domains, expandTilde);
}

}  // namespace

NSArray* NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                             NSSearchPathDomainMask domains, BOOL expandTilde) {
  if (directory != NSDocumentDirectory || domains != NSUserDomainMask || !expandTilde ||
      !hushwall::gnustep::deviceBooted()) {
    return foundationSearchPaths(directory, domains, expandTilde);
  }
  NSString* identifier = [[NSBundle mainBundle] bundleIdentifier];
  const hushwall::host::Text documents = hushwall::linux_platform::documentsDirectoryOf(
      hushwall::host::fromUtf8([identifier UTF8String]));
  NSString* path = [NSString stringWithUTF8String:hushwall::host::toUtf8(documents).c_str()];
  return [NSArray arrayWithObject:HWNativePath(path)];
}
