// System sounds: nothing plays on Linux; each request is recorded.
#include <AudioToolbox/AudioToolbox.h>

#include "platform/gnustep/stand_in_state.h"

extern "C" void AudioServicesPlaySystemSound(SystemSoundID inSystemSoundID) {
  hushwall::gnustep::standInState().sounds.push_back(inSystemSoundID);
}
