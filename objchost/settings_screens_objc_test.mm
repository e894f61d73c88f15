// The settings bundle's "Blacklist" and "History" screens under a real
// Objective-C runtime, on the stand-in UIKit: what they show of a real
// database, and that their add, delete and clear actions reach it, with the
// announcements on the device's bus.
#import "preferences.h"

#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "HWBlacklistController.h"
#include "HWHistoryController.h"
#include "platform/gnustep/stand_in_device.h"
#include "startup/notification_names.h"
#include "testing/child_process.h"
#include "testing/database_rows.h"
#include "testing/private_bus.h"
#include "testing/temp_device_root.h"

@interface HushwallSettingsListController : PSListController
@end

// The runtime has no frame pointers, so only the slow unwinder reaches the
// frames that the runtime's leak suppressions (runtime_leaks.cpp) name.
extern "C" const char* __asan_default_options() { return "fast_unwind_on_malloc=0"; }

namespace hushwall::settings {
namespace {

namespace fs = std::filesystem;
using gnustep::shownAlerts;
using gnustep::typeIntoAlertField;

const std::string kData = "/var/mobile/Library/Preferences/Hushwall";

std::string text(NSString* string) { return string == nil ? "(nil)" : [string UTF8String]; }

// Every row as the table shows it: "header|text|detail" per row.
std::vector<std::string> shownRows(UITableViewController* screen) {
  UITableView* table = [screen tableView];
  id<UITableViewDataSource> source = (id<UITableViewDataSource>)[table dataSource];
  NSInteger sections = [source respondsToSelector:@selector(numberOfSectionsInTableView:)]
                           ? [source numberOfSectionsInTableView:table]
                           : 1;
  std::vector<std::string> rows;
  for (NSInteger s = 0; s < sections; ++s) {
    NSString* header = [source respondsToSelector:@selector(tableView:titleForHeaderInSection:)]
                           ? [source tableView:table titleForHeaderInSection:s]
                           : nil;
    for (NSInteger r = 0; r < [source tableView:table numberOfRowsInSection:s]; ++r) {
      UITableViewCell* cell = [source tableView:table cellForRowAtIndexPath:[NSIndexPath indexPathForRow:r inSection:s]];
      rows.push_back((header != nil ? text(header) + "|" : "") + text([[cell textLabel] text]) + "|" +
                     text([[cell detailTextLabel] text]));
    }
  }
  return rows;
}

std::string emptyState(UITableViewController* screen) {
  UIView* background = [[screen tableView] backgroundView];
  return [background isKindOfClass:[UILabel class]] ? text([(UILabel*)background text]) : "";
}

void tap(UIBarButtonItem* button) { [[button target] performSelector:[button action] withObject:button]; }

void swipeToDelete(UITableViewController* screen, NSInteger section, NSInteger row) {
  [(id<UITableViewDataSource>)screen tableView:[screen tableView]
                            commitEditingStyle:UITableViewCellEditingStyleDelete
                             forRowAtIndexPath:[NSIndexPath indexPathForRow:row inSection:section]];
}

// The alert shown last, answered with the button titled `button`: its
// message.
std::string answerAlert(const std::string& button) {
  if (shownAlerts().empty()) return "(no alert)";
  const gnustep::ShownAlert alert = shownAlerts().back();
  for (std::size_t i = 0; i < alert.buttons.size(); ++i) {
    if (alert.buttons[i] == button) {
      gnustep::tapAlertButton(static_cast<std::int64_t>(i));
      return alert.message;
    }
  }
  ADD_FAILURE() << "the alert '" << alert.title << "' has no button " << button;
  return alert.message;
}

// "+" on the blacklist, the number and the name typed in, and "Add" tapped.
void addThroughPrompt(UIViewController* screen, const std::string& number, const std::string& name) {
  tap([[screen navigationItem] rightBarButtonItem]);
  typeIntoAlertField(0, number);
  typeIntoAlertField(1, name);
  answerAlert("Add");
}

// Darwin notifications of one name that reach this process, its own posts
// included, as they arrive on the main loop.
int& heard(const char* name) {
  static std::map<std::string, int>* counts = new std::map<std::string, int>;
  if (counts->count(name) == 0) {
    CFNotificationCenterAddObserver(
        CFNotificationCenterGetDarwinNotifyCenter(), nullptr,
        [](CFNotificationCenterRef, void*, CFStringRef n, const void*, CFDictionaryRef) {
          ++(*counts)[[(NSString*)n UTF8String]];
        },
        (CFStringRef)[NSString stringWithUTF8String:name], nullptr, CFNotificationSuspensionBehaviorHold);
    (*counts)[name] = 0;
  }
  return (*counts)[name];
}

bool runLoopUntil(const std::function<bool()>& done) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.05, true);
  }
  return true;
}

// The main switches page inside a navigation stack, and the screen that the
// Root.plist entry labelled `label` pushes when tapped.
UIViewController* openFromMainPage(UINavigationController* navigation, NSString* label) {
  NSDictionary* page = [NSDictionary dictionaryWithContentsOfFile:@HUSHWALL_ROOT_PLIST];
  for (NSDictionary* item in [page objectForKey:@"items"]) {
    if (![[item objectForKey:@"label"] isEqualToString:label]) continue;
    // A button row: Preferences performs its action on the page.
    if (![[item objectForKey:@"cell"] isEqualToString:@"PSButtonCell"]) continue;
    SEL action = NSSelectorFromString([item objectForKey:@"action"]);
    UIViewController* main = [[navigation viewControllers] objectAtIndex:0];
    if (![main respondsToSelector:action]) return nil;
    [main performSelector:action withObject:nil];
    return [navigation topViewController];
  }
  return nil;
}

struct ScreensDevice {
  ScreensDevice() { root.installDatabase(); }
  testing::TempDeviceRoot root;
  testing::PrivateBus bus{root.path()};
};

TEST(SettingsScreens, BlacklistShowsRowsAndItsAddAndDeleteReachTheDatabase) {
  ScreensDevice device;
  testing::runInChildProcess([&] {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    gnustep::bootDevice(device.root.path());
    int& announced = heard(kContactsChangedNotification);
    UINavigationController* navigation = [[UINavigationController alloc]
        initWithRootViewController:[[[HushwallSettingsListController alloc] init] autorelease]];
    UITableViewController* screen = (UITableViewController*)openFromMainPage(navigation, @"Blacklist");
    ASSERT_TRUE([screen isKindOfClass:[HWBlacklistController class]]);
    EXPECT_EQ(text([screen title]), "Blacklist");
    EXPECT_TRUE(shownRows(screen).empty());
    EXPECT_EQ(emptyState(screen), "No blocked numbers. Tap + to add one.");

    // "+" asks for the number and the name, in one alert.
    tap([[screen navigationItem] rightBarButtonItem]);
    const gnustep::ShownAlert prompt = shownAlerts().back();
    EXPECT_EQ(prompt.title, "Add to Blacklist");
    EXPECT_EQ(prompt.buttons, (std::vector<std::string>{"Cancel", "Add"}));
    ASSERT_EQ(prompt.fields.size(), 2u);
    EXPECT_EQ(prompt.fields[0].placeholder, "Number");
    EXPECT_EQ(prompt.fields[1].placeholder, "Name");
    EXPECT_FALSE(prompt.fields[1].secure) << "the name is shown as typed";
    typeIntoAlertField(0, "+49 170 1234");
    typeIntoAlertField(1, "Mallory");
    std::size_t alerts = shownAlerts().size();
    answerAlert("Add");
    EXPECT_EQ(shownAlerts().size(), alerts) << "no problem to report";
    testing::execSql(device.root.databaseFile(),
                     "INSERT INTO Blacklist (name, phoneNumber) VALUES ('Chat', '4930')");
    [(HWBlacklistController*)screen reload];
    EXPECT_EQ(shownRows(screen), (std::vector<std::string>{"+49 170 1234|Mallory", "4930|Chat"}));
    EXPECT_EQ(emptyState(screen), "");

    // Refusals are shown and write nothing; a cancelled prompt adds nothing.
    addThroughPrompt(screen, "4930", "Again");
    EXPECT_EQ(answerAlert("OK"), "'4930' is already on the blacklist; nothing added");
    addThroughPrompt(screen, "4930 or so", "");
    EXPECT_NE(answerAlert("OK").find("malformed phone number '4930 or so'"), std::string::npos);
    tap([[screen navigationItem] rightBarButtonItem]);
    typeIntoAlertField(0, "4917");
    alerts = shownAlerts().size();
    answerAlert("Cancel");
    EXPECT_EQ(shownAlerts().size(), alerts);
    EXPECT_EQ(shownRows(screen).size(), 2u);

    swipeToDelete(screen, 0, 0);
    EXPECT_EQ(shownRows(screen), (std::vector<std::string>{"4930|Chat"}));
    swipeToDelete(screen, 0, 0);
    EXPECT_TRUE(shownRows(screen).empty());
    EXPECT_EQ(emptyState(screen), "No blocked numbers. Tap + to add one.");

    // The user goes back while the prompt is open: the prompt keeps its
    // screen alive (an alert does not keep its delegate), and its "Add"
    // still adds.
    NSAutoreleasePool* inner = [[NSAutoreleasePool alloc] init];
    UIViewController* gone = openFromMainPage(navigation, @"Blacklist");
    tap([[gone navigationItem] rightBarButtonItem]);
    [navigation popViewControllerAnimated:NO];
    [inner release];
    typeIntoAlertField(0, "4917");
    typeIntoAlertField(1, "Late");
    answerAlert("Add");
    [(HWBlacklistController*)screen reload];
    EXPECT_EQ(shownRows(screen), (std::vector<std::string>{"4917|Late"}));
    EXPECT_TRUE(runLoopUntil([&] { return announced >= 4; }));
    EXPECT_EQ(announced, 4) << "two adds and two deletions";
    [navigation release];
    [pool release];
  });
  EXPECT_TRUE(testing::readHistoryRows(device.root.databaseFile()).empty());
}

TEST(SettingsScreens, HistoryShowsSectionsOpensPicturesDeletesClearsAndFollowsChanges) {
  ScreensDevice device;
  const std::string picture = kData + "/4917/4917-1400000001.000000.png";
  fs::create_directories(device.root.native(kData + "/4917"));
  std::ofstream(device.root.native(picture)) << "png bytes";
  std::ofstream(device.root.native(kData + "/keep.txt")) << "not a picture";
  testing::execSql(device.root.databaseFile(),
                   "INSERT INTO Blacklist (name, phoneNumber) VALUES ('Spam', '4917');"
                   "INSERT INTO History (phoneNumber, name, message, date, blockType, mediaType,"
                   " mediaFileName, mediaURL, isMine) VALUES"
                   " ('4917', 'Spam', 'Buy now', 1400000000, 0, 0, '', '', 0),"
                   " ('4917', 'Spam', '', 1400000001, 0, 1, '" + picture + "', 'u', 0),"
                   " ('4930', 'Bob', 'hi', 1400000002, 2, 0, '', '', 0);");
  testing::runInChildProcess([&] {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    gnustep::bootDevice(device.root.path());
    int& changes = heard(kNewMessagedAddedNotification);
    UINavigationController* navigation = [[UINavigationController alloc]
        initWithRootViewController:[[[HushwallSettingsListController alloc] init] autorelease]];
    UITableViewController* screen = (UITableViewController*)openFromMainPage(navigation, @"History");
    ASSERT_TRUE([screen isKindOfClass:[HWHistoryController class]]);
    std::vector<std::string> rows = shownRows(screen);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].substr(0, rows[0].find(" · ")), "Bob (4930)|hi|Bob");
    EXPECT_NE(rows[0].find(" · Blocked notification · "), std::string::npos) << rows[0];
    EXPECT_EQ(rows[1].substr(0, rows[1].find(" · ")), "Spam (4917)|Picture|Spam");
    EXPECT_EQ(rows[2].substr(0, rows[2].find(" · ")), "Spam (4917)|Buy now|Spam");
    EXPECT_GT(rows[2].size(), rows[2].rfind(" · ") + 3) << "a date is shown: " << rows[2];

    // The picture row opens the picture; coming back shows the list again.
    [(id<UITableViewDelegate>)screen tableView:[screen tableView]
                       didSelectRowAtIndexPath:[NSIndexPath indexPathForRow:0 inSection:1]];
    HWPictureController* opened = (HWPictureController*)[navigation topViewController];
    ASSERT_TRUE([opened isKindOfClass:[HWPictureController class]]);
    EXPECT_EQ(text([opened path]), device.root.native(picture));
    EXPECT_NE([(UIImageView*)[opened view] image], nil);
    [navigation popViewControllerAnimated:YES];
    [(id<UITableViewDelegate>)screen tableView:[screen tableView]
                       didSelectRowAtIndexPath:[NSIndexPath indexPathForRow:1 inSection:1]];
    EXPECT_EQ([navigation topViewController], screen) << "a row without a picture opens nothing";

    // A history change made elsewhere redraws the open screen.
    testing::execSql(device.root.databaseFile(),
                     "INSERT INTO History (phoneNumber, name, message, date, blockType, mediaType,"
                     " mediaFileName, mediaURL, isMine) VALUES ('4917', 'Me', 'stop', 1400000009, 1, 0, '', '', 1)");
    const NSInteger reloads = [[screen tableView] reloadCount];
    CFNotificationCenterPostNotification(CFNotificationCenterGetDarwinNotifyCenter(),
                                         (CFStringRef)[NSString stringWithUTF8String:kNewMessagedAddedNotification],
                                         nullptr, nullptr, true);
    EXPECT_TRUE(runLoopUntil([&] { return [[screen tableView] reloadCount] > reloads; }));
    rows = shownRows(screen);
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_NE(rows[0].find("Spam (4917)|stop|Me · Sent by you · "), std::string::npos) << rows[0];

    // Swipe to delete takes the row and its picture.
    swipeToDelete(screen, 0, 1);
    EXPECT_FALSE(fs::exists(device.root.native(picture)));
    EXPECT_EQ(shownRows(screen).size(), 3u);

    // "Clear History" asks first.
    UIBarButtonItem* clear = [[screen navigationItem] rightBarButtonItem];
    EXPECT_EQ(text([clear title]), "Clear History");
    tap(clear);
    EXPECT_EQ(shownAlerts().back().buttons, (std::vector<std::string>{"Cancel", "Clear History"}));
    EXPECT_EQ(answerAlert("Cancel"), "Every blocked message and its picture will be deleted.");
    EXPECT_EQ(shownRows(screen).size(), 3u);
    tap(clear);
    const std::size_t alerts = shownAlerts().size();
    answerAlert("Clear History");
    EXPECT_EQ(shownAlerts().size(), alerts) << "no problem to report";
    EXPECT_TRUE(shownRows(screen).empty());
    EXPECT_EQ(emptyState(screen), "No blocked messages.");
    EXPECT_FALSE([clear isEnabled]);
    EXPECT_TRUE(runLoopUntil([&] { return changes >= 3; }));
    [navigation release];
    [pool release];
  });
  EXPECT_TRUE(testing::readHistoryRows(device.root.databaseFile()).empty());
  EXPECT_TRUE(fs::exists(device.root.native(kData + "/keep.txt")));
  EXPECT_TRUE(fs::exists(device.root.databaseFile()));
}

}  // namespace
}  // namespace hushwall::settings
