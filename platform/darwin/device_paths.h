// Where a device path is in the file system the process sees. On the phone
// the two are the same; the Linux stand-in puts the device under a root
// directory. The only place where the adapter and its two platforms differ.
#ifndef HUSHWALL_PLATFORM_DARWIN_DEVICE_PATHS_H_
#define HUSHWALL_PLATFORM_DARWIN_DEVICE_PATHS_H_

#import <Foundation/Foundation.h>

// "/var/mobile/..." as the process opens it; nil for nil.
NSString* HWNativePath(NSString* devicePath);
// The reverse, for paths the platform hands back (a bundle's path).
NSString* HWDevicePath(NSString* nativePath);

#endif  // HUSHWALL_PLATFORM_DARWIN_DEVICE_PATHS_H_
