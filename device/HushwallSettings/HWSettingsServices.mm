#include "HWSettingsServices.h"

#include <memory>

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
  // One formatter for the whole list: making one costs far more than using
  // it, and a history holds thousands of rows. Released with the last copy
  // of the function.
  NSDateFormatter* made = [[NSDateFormatter alloc] init];
  [made setLocale:[NSLocale currentLocale]];
  [made setDateStyle:NSDateFormatterMediumStyle];
  [made setTimeStyle:NSDateFormatterShortStyle];
  std::shared_ptr<void> formatter(made, [](void* object) { [(NSDateFormatter*)object release]; });
  return [formatter](double secondsSince1970) {
    NSDate* date = [NSDate dateWithTimeIntervalSince1970:secondsSince1970];
    return utf8([(NSDateFormatter*)formatter.get() stringFromDate:date]);
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
