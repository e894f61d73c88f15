#import "settings_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

NSString* const HWSettingsFilePath =
    @"/var/mobile/Library/Preferences/com.Corvanta.HushwallSettings.plist";

NSDictionary* HWReadSettings(NSString* path) {
  NSData* data = [NSData dataWithContentsOfFile:path];
  if (data == nil) return [NSDictionary dictionary];
  id root = [NSPropertyListSerialization propertyListWithData:data
                                                      options:NSPropertyListImmutable
                                                       format:NULL
                                                        error:NULL];
  return [root isKindOfClass:[NSDictionary class]] ? root : [NSDictionary dictionary];
}

BOOL HWWriteSetting(NSString* path, NSString* key, id value) {
  if (path == nil || key == nil || value == nil) return NO;
  // The lock lives in a file of its own: the settings file itself is
  // replaced by a rename, and a lock on the replaced file would guard
  // nothing for the next writer.
  NSString* lockPath = [path stringByAppendingString:@".lock"];
  const int lock = open([lockPath fileSystemRepresentation], O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (lock < 0) return NO;
  BOOL written = NO;
  if (flock(lock, LOCK_EX) == 0) {
    NSMutableDictionary* settings = [[HWReadSettings(path) mutableCopy] autorelease];
    [settings setObject:value forKey:key];
    NSData* data =
        [NSPropertyListSerialization dataWithPropertyList:settings
                                                   format:NSPropertyListBinaryFormat_v1_0
                                                  options:0
                                                    error:NULL];
    // Atomically: a temporary file beside it, renamed over it, so that a
    // reader sees the old file or the new one, never half of one.
    written = data != nil && [data writeToFile:path atomically:YES];
    flock(lock, LOCK_UN);
  }
  close(lock);
  return written;
}
