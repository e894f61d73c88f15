#import "objchost/springboard_classes.h"

#include <objc/runtime.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "objchost/objc_host_log.h"

namespace {

using hushwall::objchost::FirmwareMethod;
using hushwall::objchost::FirmwareProfile;

void show(const char* where, id observer, id bulletin, NSUInteger feed) {
  hushwall::objchost::objcHostLog().shown.push_back({where, observer, bulletin, feed});
}

void showWithReply(const char* where, id observer, id bulletin, NSUInteger feed, bool play,
                   id reply) {
  hushwall::objchost::objcHostLog().shown.push_back(
      {where, observer, bulletin, feed, true, play, reply});
}

// The firmware methods, with the arm64 types of the dumps (an NSUInteger
// feed, a bool for BOOL) in exactly the C types that the adapter's method
// shapes call them with: every object an id.
template <const char* where>
void addBulletin(id, SEL, id observer, id bulletin, NSUInteger feed) {
  show(where, observer, bulletin, feed);
}
template <const char* where>
void addBulletinWithReply(id, SEL, id observer, id bulletin, NSUInteger feed, bool play,
                          id reply) {
  showWithReply(where, observer, bulletin, feed, play, reply);
}
constexpr char kBannerLog[] = "banner";
constexpr char kLockScreenLog[] = "lockscreen";
constexpr char kNotificationCenterLog[] = "notificationCenter";

id sectionID(id self, SEL) { return ((BBBulletin*)self)->_sectionID; }
id context(id self, SEL) { return ((BBBulletin*)self)->_context; }
id message(id self, SEL) { return ((BBBulletin*)self)->_message; }

id bundleIdentifier(id self, SEL) { return ((SBApplication*)self)->_bundleIdentifier; }
id badgeNumberOrString(id self, SEL) { return ((SBApplication*)self)->_badge; }
void setBadge(id self, SEL, id badge) {
  SBApplication* application = self;
  [badge retain];
  [application->_badge release];
  application->_badge = badge;
}

SBApplicationController* sharedController() {
  static SBApplicationController* shared = [[SBApplicationController alloc] init];
  return shared;
}
id applicationsWithBundleIdentifier(id self, SEL, id bundleIdentifier) {
  NSMutableArray* matching = [NSMutableArray array];
  for (SBApplication* application in ((SBApplicationController*)self)->_applications) {
    if ([[application bundleIdentifier] isEqual:bundleIdentifier]) [matching addObject:application];
  }
  return matching;
}
// The first installed with that identifier, or nil.
id applicationWithBundleIdentifier(id self, SEL, id bundleIdentifier) {
  NSArray* all = applicationsWithBundleIdentifier(self, nullptr, bundleIdentifier);
  return [all count] > 0 ? [all objectAtIndex:0] : nil;
}

struct Implementation {
  const char* className;
  const char* selector;
  IMP imp;
};
const Implementation kImplementations[] = {
    {"SBBulletinBannerController", "observer:addBulletin:forFeed:",
     (IMP)&addBulletin<kBannerLog>},
    {"SBBulletinBannerController", "observer:addBulletin:forFeed:playLightsAndSirens:withReply:",
     (IMP)&addBulletinWithReply<kBannerLog>},
    {"SBLockScreenNotificationListController", "observer:addBulletin:forFeed:",
     (IMP)&addBulletin<kLockScreenLog>},
    {"SBLockScreenNotificationListController",
     "observer:addBulletin:forFeed:playLightsAndSirens:withReply:",
     (IMP)&addBulletinWithReply<kLockScreenLog>},
    {"SBBulletinObserverViewController", "observer:addBulletin:forFeed:",
     (IMP)&addBulletin<kNotificationCenterLog>},
    {"BBBulletin", "sectionID", (IMP)&sectionID},
    {"BBBulletin", "context", (IMP)&context},
    {"BBBulletin", "message", (IMP)&message},
    {"SBApplication", "bundleIdentifier", (IMP)&bundleIdentifier},
    {"SBApplication", "badgeNumberOrString", (IMP)&badgeNumberOrString},
    {"SBApplication", "setBadge:", (IMP)&setBadge},
    {"SBApplicationController", "applicationsWithBundleIdentifier:",
     (IMP)&applicationsWithBundleIdentifier},
    {"SBApplicationController", "applicationWithBundleIdentifier:",
     (IMP)&applicationWithBundleIdentifier},
};

IMP implementationOf(const FirmwareMethod& method) {
  for (const Implementation& known : kImplementations) {
    if (std::strcmp(known.className, method.className) == 0 &&
        std::strcmp(known.selector, method.selector) == 0) {
      return known.imp;
    }
  }
  return nullptr;
}

// GCC's runtime reads a block's "@?" as two arguments; to it a block is an
// object like any other.
std::string runtimeTypes(std::string encoding) {
  for (std::size_t at; (at = encoding.find("@?")) != std::string::npos;) encoding.erase(at + 1, 1);
  return encoding;
}

}  // namespace

namespace hushwall::objchost {

const FirmwareProfile& installSpringBoardFirmware(const std::string& version) {
  const FirmwareProfile& profile = firmwareProfileFor(version);
  static const FirmwareProfile* installed = nullptr;
  if (installed != nullptr) {
    throw std::logic_error(std::string("this SpringBoard is already of firmware ") +
                           installed->name);
  }
  installed = &profile;
  for (std::size_t i = 0; i < profile.count; ++i) {
    const FirmwareMethod& method = profile.methods[i];
    Class cls = (Class)objc_getClass(method.className);
    if (cls == Nil) throw std::logic_error(std::string("no class ") + method.className);
    SEL selector = sel_registerName(method.selector);
    IMP imp = method.kind == '-' ? implementationOf(method) : nullptr;
    // Present already: UIKit's stand-in (platform/gnustep) has the
    // status-bar methods of every generation, the class methods are the
    // stand-ins' own (GCC's runtime cannot add one to a class it has not
    // set up, and every generation has them), and a method the dumps
    // declare twice (once per word size) is registered once.
    const bool present = method.kind == '+' ? [(id)cls respondsToSelector:selector]
                                            : class_getInstanceMethod(cls, selector) != nullptr;
    if (present) continue;
    if (imp == nullptr) throw std::logic_error(std::string("no stand-in for ") + method.selector);
    const std::string types = runtimeTypes(arm64Encoding(method, firstDumpOf(method)));
    class_addMethod(cls, selector, imp, types.c_str());
  }
  return profile;
}

bool deliverTo(id controller, id observer, BBBulletin* bulletin, id reply) {
  if ([controller respondsToSelector:@selector(observer:addBulletin:forFeed:
                                                   playLightsAndSirens:withReply:)]) {
    [controller observer:observer
                addBulletin:bulletin
                    forFeed:kFeed
        playLightsAndSirens:true
                  withReply:reply];
    return true;
  }
  [controller observer:observer addBulletin:bulletin forFeed:kFeed];
  return false;
}

}  // namespace hushwall::objchost

@implementation BBBulletin
- (void)setSectionID:(NSString*)sectionID {
  [_sectionID release];
  _sectionID = [sectionID copy];
}
- (void)setContext:(NSDictionary*)context {
  [context retain];
  [_context release];
  _context = context;
}
- (void)setMessage:(NSString*)message {
  [_message release];
  _message = [message copy];
}
@end

@implementation SBBulletinBannerController
@end
@implementation SBLockScreenNotificationListController
@end
@implementation SBBulletinObserverViewController
@end

@implementation SBApplication
- (void)setBundleIdentifier:(NSString*)bundleIdentifier {
  [_bundleIdentifier release];
  _bundleIdentifier = [bundleIdentifier copy];
}
@end

@implementation SBApplicationController
+ (id)sharedInstance {
  return sharedController();
}
+ (void)addApplication:(SBApplication*)application {
  SBApplicationController* controller = sharedController();
  if (controller->_applications == nil) controller->_applications = [[NSMutableArray alloc] init];
  [controller->_applications addObject:application];
}
@end

@implementation HWBaseClassText
+ (id)textWithString:(NSString*)string {
  HWBaseClassText* text = [[[HWBaseClassText alloc] init] autorelease];
  text->_characters = [string copy];
  return text;
}
- (void)dealloc {
  [_characters release];
  [super dealloc];
}
- (Class)class {
  return [NSString class];
}
- (NSUInteger)length {
  return [_characters length];
}
- (unichar)characterAtIndex:(NSUInteger)index {
  return [_characters characterAtIndex:index];
}
@end
