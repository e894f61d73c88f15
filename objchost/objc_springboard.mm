// The scenario's SpringBoard side in this Objective-C app, with the device
// adapter injected: real classes, real message sends.
#import "objchost/springboard_classes.h"

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <sstream>
#include <string>

#include "objchost/objc_app.h"
#include "objchost/objc_host_log.h"
#include "objchost/two_hosts.h"
#include "platform/gnustep/stand_in_device.h"

namespace hushwall::objchost {
namespace {

using host::Value;

NSString* ns(const std::string& utf8) { return [NSString stringWithUTF8String:utf8.c_str()]; }
NSString* ns(const OptString& utf8) { return utf8 ? ns(*utf8) : nil; }

// What SpringBoard itself would hold for a scenario's value: numbers,
// texts of the base class or of GNUstep's own string classes, and nested
// dictionaries (a bulletin's context).
id objectFor(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::kNil:
      return nil;
    case Value::Kind::kBoolean:
      return [NSNumber numberWithBool:value.boolValue()];
    case Value::Kind::kInteger:
      return [NSNumber numberWithInt:(int)value.doubleValue()];
    case Value::Kind::kReal:
      return [NSNumber numberWithDouble:value.doubleValue()];
    case Value::Kind::kString: {
      NSString* text = ns(host::toUtf8(*value.text()));
      return value.isMemberOfBaseStringClass() ? [HWBaseClassText textWithString:text] : text;
    }
    case Value::Kind::kDictionary: {
      NSMutableDictionary* dictionary = [NSMutableDictionary dictionary];
      for (const auto& [key, item] : *value.dictionary()) {
        if (id object = objectFor(item)) [dictionary setObject:object forKey:ns(host::toUtf8(key))];
      }
      return dictionary;
    }
    default:
      ADD_FAILURE() << "no SpringBoard object for " << describe(value);
      return nil;
  }
}

// The badge as describe() writes a value.
std::string describeBadge(id badge) {
  if (badge == nil) return "nil";
  std::ostringstream out;
  if ([badge isKindOfClass:[NSString class]]) {
    out << ([badge isMemberOfClass:[NSString class]] ? "string '" : "string subclass '")
        << [badge UTF8String] << "'";
  } else if ([badge isKindOfClass:[NSNumber class]]) {
    const char type = *[badge objCType];
    if (type == 'f' || type == 'd') {
      out << "real " << [badge doubleValue];
    } else {
      out << "int " << [badge longLongValue];
    }
  } else {
    out << "object of class " << class_getName(object_getClass(badge));
  }
  return out.str();
}

}  // namespace

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

namespace {

bool arrived = false;
void noteArrival(CFNotificationCenterRef, void*, CFStringRef, const void*, CFDictionaryRef) {
  arrived = true;
}

class ObjcSpringBoard : public SpringBoardDriver {
 public:
  ObjcSpringBoard(const testing::TestDevice& device, DarwinCounter& posted,
                  SBApplication* messenger)
      : device_(device), posted_(posted), messenger_(messenger) {
    controllers_ = [[NSArray alloc]
        initWithObjects:[[[SBBulletinBannerController alloc] init] autorelease],
                        [[[SBLockScreenNotificationListController alloc] init] autorelease],
                        [[[SBBulletinObserverViewController alloc] init] autorelease], nil];
  }

  void deliver(const OptString& sectionID, const Value& context,
               const OptString& message) override {
    BBBulletin* bulletin = [[[BBBulletin alloc] init] autorelease];
    [bulletin setSectionID:ns(sectionID)];
    [bulletin setContext:objectFor(context)];
    [bulletin setMessage:ns(message)];
    for (id controller in controllers_) {
      id observer = [[[NSObject alloc] init] autorelease];
      // Stands for the reply block of the longer method.
      id reply = [[[NSObject alloc] init] autorelease];
      const bool longer = deliverTo(controller, observer, bulletin, reply);
      // SpringBoard's code must receive the very objects and feed it was
      // handed; anything else shows in the log as a difference.
      for (const auto& shown = objcHostLog().shown; shown_ < shown.size(); ++shown_) {
        const ObjcHostLog::Shown& got = shown[shown_];
        std::string line = "shown " + got.where;
        if (got.observer != observer) line += " with another observer";
        if (got.bulletin != bulletin) line += " with another bulletin";
        if (got.feed != kFeed) line += " with feed " + std::to_string(got.feed);
        if (got.withReply != longer) line += " through another method";
        if (longer && (got.reply != reply || !got.playLightsAndSirens)) {
          line += " with another reply";
        }
        log.push_back(line);
      }
    }
    logBadge();
  }

  void messengerSetsBadge(const Value& badge) override {
    [messenger_ setBadge:objectFor(badge)];
    logBadge();
  }

  void postFromOutside(const std::string& name) override {
    // Observers of one name all run while its signal is dispatched, so once
    // this late one has run, the tweak's have too.
    CFNotificationCenterAddObserver(CFNotificationCenterGetDarwinNotifyCenter(), nullptr,
                                    &noteArrival, (CFStringRef)ns(name), nullptr,
                                    CFNotificationSuspensionBehaviorHold);
    arrived = false;
    device_.post(name);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!arrived && std::chrono::steady_clock::now() < deadline) {
      CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.1, true);
    }
    EXPECT_TRUE(arrived) << name;
  }

  void changeSettings(const Flags& flags) override {
    device_.writeFlags(flags);
    postFromOutside("com.Corvanta.HushwallSettings.settingsChanged");
  }

  void settle() override {
    EXPECT_TRUE(posted_.settle());
    int vibrations = 0;
    for (std::uint32_t sound : gnustep::playedSystemSounds()) vibrations += sound == 4095;
    log.push_back("vibrations " + std::to_string(vibrations));
    log.push_back("status bar " + joined(gnustep::statusBarRequests()));
    for (const std::string& name : kPostedNames) {
      log.push_back("posted " + name + " " + std::to_string(posted_.count(name)));
    }
  }

 private:
  void logBadge() { log.push_back("badge " + describeBadge([messenger_ badgeNumberOrString])); }

  const testing::TestDevice& device_;
  DarwinCounter& posted_;
  SBApplication* messenger_;
  NSArray* controllers_;
  std::size_t shown_ = 0;
};

}  // namespace

Log runObjcSpringBoard(const testing::TestDevice& device, const Value& messengerBadge,
                       const SpringBoardScript& script, const std::string& firmware) {
  inObjcProcess([&] {
    // The app's identity is its bundle's, as on the phone.
    ASSERT_TRUE([[[NSBundle mainBundle] bundleIdentifier] isEqual:@"com.apple.springboard"]);
    gnustep::bootDevice(device.root());
    installSpringBoardFirmware(firmware);
    // The messenger is installed, with its badge, before the tweak arrives.
    SBApplication* messenger = [[SBApplication alloc] init];
    [messenger setBundleIdentifier:@"net.whatsapp.WhatsApp"];
    [messenger setBadge:objectFor(messengerBadge)];
    [SBApplicationController addApplication:messenger];
    DarwinCounter posted(kPostedNames);
    injectTweak();
    ObjcSpringBoard driver(device, posted, messenger);
    script(driver);
    driver.settle();
    writeLog(device, "objc", driver.log);
  });
  return readLog(device, "objc");
}

}  // namespace hushwall::objchost
