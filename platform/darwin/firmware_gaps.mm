#include "platform/darwin/firmware_gaps.h"

#import <Foundation/Foundation.h>

#include <objc/runtime.h>

namespace hushwall::darwin {
namespace {

SEL singular() { return sel_registerName("applicationWithBundleIdentifier:"); }

// Typed as the adapter's method shapes call it ("@@:@"), every object an id.
id applicationsWithBundleIdentifier(id self, SEL, id bundleIdentifier) {
  id application = [self performSelector:singular() withObject:bundleIdentifier];
  return application != nil ? [NSArray arrayWithObject:application] : [NSArray array];
}

}  // namespace

void fillFirmwareGaps() {
  Class controller = (Class)objc_getClass("SBApplicationController");
  if (controller == Nil) return;
  SEL plural = sel_registerName("applicationsWithBundleIdentifier:");
  if (class_getInstanceMethod(controller, plural) != nullptr ||
      class_getInstanceMethod(controller, singular()) == nullptr) {
    return;
  }
  class_addMethod(controller, plural, (IMP)&applicationsWithBundleIdentifier, "@@:@");
}

}  // namespace hushwall::darwin
