// On the phone a device path is the path.
#include "platform/darwin/device_paths.h"

NSString* HWNativePath(NSString* devicePath) { return devicePath; }
NSString* HWDevicePath(NSString* nativePath) { return nativePath; }
