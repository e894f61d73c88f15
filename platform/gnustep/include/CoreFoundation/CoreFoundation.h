// The part of CoreFoundation the device adapter uses: the Darwin notify
// center and the run loop that delivers its notifications. On Linux the
// notifications travel over the simulated device's D-Bus, and a
// CFStringRef is an NSString, as toll-free bridging makes it on the device.
#ifndef HUSHWALL_GNUSTEP_COREFOUNDATION_H_
#define HUSHWALL_GNUSTEP_COREFOUNDATION_H_

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Boolean;
typedef long CFIndex;
typedef double CFTimeInterval;
typedef int32_t SInt32;
typedef uint32_t UInt32;
typedef const void* CFTypeRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef struct __CFNotificationCenter* CFNotificationCenterRef;

typedef CFIndex CFNotificationSuspensionBehavior;
enum {
  CFNotificationSuspensionBehaviorDrop = 1,
  CFNotificationSuspensionBehaviorCoalesce = 2,
  CFNotificationSuspensionBehaviorHold = 3,
  CFNotificationSuspensionBehaviorDeliverImmediately = 4
};

typedef void (*CFNotificationCallback)(CFNotificationCenterRef center, void* observer,
                                       CFStringRef name, const void* object,
                                       CFDictionaryRef userInfo);

CFNotificationCenterRef CFNotificationCenterGetDarwinNotifyCenter(void);
void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer,
                                     CFNotificationCallback callBack, CFStringRef name,
                                     const void* object,
                                     CFNotificationSuspensionBehavior suspensionBehavior);
void CFNotificationCenterPostNotification(CFNotificationCenterRef center, CFStringRef name,
                                          const void* object, CFDictionaryRef userInfo,
                                          Boolean deliverImmediately);

enum { kCFRunLoopRunFinished = 1, kCFRunLoopRunStopped = 2, kCFRunLoopRunTimedOut = 3,
       kCFRunLoopRunHandledSource = 4 };
extern const CFStringRef kCFRunLoopDefaultMode;
// Runs the main loop, delivering Darwin notifications, for `seconds`, or
// until one delivery round ran callbacks when returnAfterSourceHandled.
SInt32 CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds,
                          Boolean returnAfterSourceHandled);

#ifdef __cplusplus
}
#endif

#endif  // HUSHWALL_GNUSTEP_COREFOUNDATION_H_
