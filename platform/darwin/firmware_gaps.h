// What the adapter adds to a firmware's own classes where that firmware
// lacks a method the logic sends, so that the logic speaks to every
// firmware the package claims in one way.
#ifndef HUSHWALL_PLATFORM_DARWIN_FIRMWARE_GAPS_H_
#define HUSHWALL_PLATFORM_DARWIN_FIRMWARE_GAPS_H_

namespace hushwall::darwin {

// -[SBApplicationController applicationsWithBundleIdentifier:], which the
// badge increment sends, exists on iOS 7.0 and 7.1 only (class dumps of
// MP0w/iOS-Headers, iOS7/ and iOS7.1/SpringBoard/SBApplicationController.h).
// From iOS 8.0 the class has applicationWithBundleIdentifier: instead, one
// application or nil (iOS8.0/ and iOS8.1/ of the same dumps, line 82;
// coleflowers/iOS8-Class-Dump SpringBoard/SBApplicationController.h:91 for
// 8.2; Zob3k/iOS-8.4-Headers-Full, line 90, for 8.4). Where the class lacks
// the first and has the second, the first is added, answered from the
// second: an array of the one application, or an empty array. Elsewhere
// (iOS 7, or a process without SpringBoard's classes) nothing is touched.
void fillFirmwareGaps();

}  // namespace hushwall::darwin

#endif  // HUSHWALL_PLATFORM_DARWIN_FIRMWARE_GAPS_H_
