#include <AudioToolbox/AudioToolbox.h>

#import <UIKit/UIKit.h>

#include "platform/darwin/device_services.h"
#include "platform/darwin/objc_values.h"

// SpringBoard's own status-bar images; not in the SDK's headers.
@interface UIApplication (HushwallStatusBarImages)
- (void)addStatusBarImageNamed:(NSString*)name;
- (void)removeStatusBarImageNamed:(NSString*)name;
@end

namespace hushwall::darwin {

void AudioSystemSounds::play(std::uint32_t soundId) { AudioServicesPlaySystemSound(soundId); }

void ApplicationStatusBar::addImageNamed(const host::Text& name) {
  [[UIApplication sharedApplication] addStatusBarImageNamed:stringOf(name)];
}

void ApplicationStatusBar::removeImageNamed(const host::Text& name) {
  [[UIApplication sharedApplication] removeStatusBarImageNamed:stringOf(name)];
}

double DeviceClock::now() { return [[NSDate date] timeIntervalSince1970]; }

}  // namespace hushwall::darwin
