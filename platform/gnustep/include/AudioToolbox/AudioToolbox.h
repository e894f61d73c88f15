// System sounds. On Linux nothing plays; the stand-in device counts them.
#ifndef HUSHWALL_GNUSTEP_AUDIOTOOLBOX_H_
#define HUSHWALL_GNUSTEP_AUDIOTOOLBOX_H_

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef UInt32 SystemSoundID;
enum { kSystemSoundID_Vibrate = 0x00000FFF };

void AudioServicesPlaySystemSound(SystemSoundID inSystemSoundID);

#ifdef __cplusplus
}
#endif

#endif  // HUSHWALL_GNUSTEP_AUDIOTOOLBOX_H_
