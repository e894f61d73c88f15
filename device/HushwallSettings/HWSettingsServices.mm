#include "HWSettingsServices.h"

#include "platform/darwin/device_services.h"
#include "startup/notification_names.h"

namespace hushwall::settings {

NSString* const kHistoryChangedNotification = @"HWHistoryChangedNotification";

host::FileSystem& files() {
  static darwin::FoundationFileSystem* files = new darwin::FoundationFileSystem;
  return *files;
}

host::NotifyCenter& notifications() {
  static darwin::DarwinNotifyCenter* center = new darwin::DarwinNotifyCenter;
  return *center;
}

companion::DateFormat localeDateFormat() {
  return [](double secondsSince1970) {
    NSDateFormatter* formatter = [[NSDateFormatter alloc] init];
    [formatter setLocale:[NSLocale currentLocale]];
    [formatter setDateStyle:NSDateFormatterMediumStyle];
    [formatter setTimeStyle:NSDateFormatterShortStyle];
    std::string text =
        utf8([formatter stringFromDate:[NSDate dateWithTimeIntervalSince1970:secondsSince1970]]);
    [formatter release];
    return text;
  };
}

void relayHistoryChanges() {
  static bool relaying = false;
  if (relaying) return;
  relaying = true;
  notifications().addObserver(
      kNewMessagedAddedNotification,
      [] {
        [[NSNotificationCenter defaultCenter] postNotificationName:kHistoryChangedNotification
                                                            object:nil];
      },
      host::SuspensionBehavior::kHold);
}

NSString* ns(const std::string& text) {
  // Text from the companion's logic is valid UTF-8; nil would still be
  // wrong in a label, so a failure shows as the empty string.
  NSString* string = [[[NSString alloc] initWithBytes:text.data()
                                               length:text.size()
                                             encoding:NSUTF8StringEncoding] autorelease];
  return string != nil ? string : @"";
}

std::string utf8(NSString* string) {
  const char* text = [string UTF8String];
  return text != nullptr ? std::string(text) : std::string();
}

}  // namespace hushwall::settings
