// The settings file as the settings bundle writes it: the same binary
// property list that the library reads and hushwallctl writes, replaced
// atomically, each change made under an exclusive lock so that two writers
// never lose each other's keys.
#ifndef HUSHWALL_DEVICE_SETTINGS_SETTINGS_FILE_H_
#define HUSHWALL_DEVICE_SETTINGS_SETTINGS_FILE_H_

#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

// "/var/mobile/Library/Preferences/com.Corvanta.HushwallSettings.plist".
extern NSString* const HWSettingsFilePath;

// The file's dictionary; empty when it is missing, unreadable or not a
// dictionary.
NSDictionary* HWReadSettings(NSString* path);

// Sets one key. Reads the file, changes the key and renames a complete new
// file over it, all while holding flock(2) on "<path>.lock", the lock every
// writer of the file takes. NO, and the file untouched, when the lock, the
// encoding or the write fails.
BOOL HWWriteSetting(NSString* path, NSString* key, id value);

#ifdef __cplusplus
}
#endif

#endif  // HUSHWALL_DEVICE_SETTINGS_SETTINGS_FILE_H_
