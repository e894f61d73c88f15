// The settings bundle's "Blacklist" and "History" screens under a real
// Objective-C runtime, on the stand-in UIKit: what they show of a real
// database, and that their add, delete and clear actions reach it, with the
// announcements on the device's bus. (What the companion's logic decides is
// companion/'s to test; here, that the screens reach it.)
#import "preferences.h"

#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <algorithm>
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
  const auto found = std::find(alert.buttons.begin(), alert.buttons.end(), button);
  EXPECT_NE(found, alert.buttons.end()) << "the alert '" << alert.title << "' has no button " << button;
  if (found != alert.buttons.end()) gnustep::tapAlertButton(found - alert.buttons.begin());
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

// The screen that the main page's button row action pushes
// (device/package_layout_test.cpp holds the rows to these actions).
UIViewController* openFromMainPage(UINavigationController* navigation, SEL action) {
  [[[navigation viewControllers] objectAtIndex:0] performSelector:action withObject:nil];
  return [navigation topViewController];
}

// Both screens in one app process on one device: the blacklist's add,
// refusal, cancel and delete, then the history's sections, redraw, delete
// and clear.
TEST(SettingsScreens, BlacklistAndHistoryShowTheDatabaseAndTheirActionsReachIt) {
  testing::TempDeviceRoot root;
  root.installDatabase();
  testing::PrivateBus bus{root.path()};
  const std::string picture = kData + "/4917/4917-1400000001.000000.png";
  fs::create_directories(root.native(kData + "/4917"));
  std::ofstream(root.native(picture)) << "png bytes";
  std::ofstream(root.native(kData + "/keep.txt")) << "not a picture";
  testing::execSql(root.databaseFile(),
                   "INSERT INTO History (phoneNumber, name, message, date, blockType, mediaType,"
                   " mediaFileName, mediaURL, isMine) VALUES"
                   " ('4917', 'Spam', 'Buy now', 1400000000, 0, 0, '', '', 0),"
                   " ('4917', 'Spam', '', 1400000001, 0, 1, '" + picture + "', 'u', 0),"
                   " ('4930', 'Bob', 'hi', 1400000002, 2, 0, '', '', 0);");
  testing::runInChildProcess([&] {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    gnustep::bootDevice(root.path());
    int& announced = heard(kContactsChangedNotification);
    // The main switches page inside a navigation stack.
    UINavigationController* navigation = [[[UINavigationController alloc]
        initWithRootViewController:[[[HushwallSettingsListController alloc] init] autorelease]] autorelease];
    UITableViewController* screen = (UITableViewController*)openFromMainPage(navigation, @selector(showBlacklist:));
    ASSERT_TRUE([screen isKindOfClass:[HWBlacklistController class]]);
    EXPECT_TRUE(shownRows(screen).empty());

    // "+" asks for the number and the name, in one alert.
    addThroughPrompt(screen, "+49 170 1234", "Mallory");
    testing::execSql(root.databaseFile(),
                     "INSERT INTO Blacklist (name, phoneNumber) VALUES ('Chat', '4930')");
    [(HWBlacklistController*)screen reload];
    EXPECT_EQ(shownRows(screen), (std::vector<std::string>{"+49 170 1234|Mallory", "4930|Chat"}));

    // A refusal is shown and writes nothing (what is refused is the
    // companion's to test); a cancelled prompt adds nothing.
    addThroughPrompt(screen, "4930", "Again");
    EXPECT_EQ(answerAlert("OK"), "'4930' is already on the blacklist; nothing added");
    tap([[screen navigationItem] rightBarButtonItem]);
    typeIntoAlertField(0, "4917");
    answerAlert("Cancel");
    EXPECT_EQ(shownRows(screen).size(), 2u);

    swipeToDelete(screen, 0, 0);
    EXPECT_EQ(shownRows(screen), (std::vector<std::string>{"4930|Chat"}));
    swipeToDelete(screen, 0, 0);
    EXPECT_TRUE(shownRows(screen).empty());
    UILabel* empty = (UILabel*)[[screen tableView] backgroundView];
    EXPECT_TRUE([empty isKindOfClass:[UILabel class]] && text([empty text]) == "No blocked numbers. Tap + to add one.");

    // The user goes back while the prompt is open: the prompt keeps its
    // screen alive (an alert does not keep its delegate), and its "Add"
    // still adds.
    NSAutoreleasePool* inner = [[NSAutoreleasePool alloc] init];
    UIViewController* gone = openFromMainPage(navigation, @selector(showBlacklist:));
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

    // The history, newest first by sections.
    int& changes = heard(kNewMessagedAddedNotification);
    screen = (UITableViewController*)openFromMainPage(navigation, @selector(showHistory:));
    ASSERT_TRUE([screen isKindOfClass:[HWHistoryController class]]);
    // (How a row is worded is companion/history_list's to test.)
    std::vector<std::string> rows = shownRows(screen);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].substr(0, rows[0].find(" · ")), "Bob (4930)|hi|Bob");
    EXPECT_EQ(rows[1].substr(0, rows[1].find(" · ")), "Spam (4917)|Picture|Spam");
    EXPECT_EQ(rows[2].substr(0, rows[2].find(" · ")), "Spam (4917)|Buy now|Spam");
    // The picture row opens the picture; a row without one opens nothing.
    auto select = [&](NSInteger row) {
      [(id<UITableViewDelegate>)screen tableView:[screen tableView]
                         didSelectRowAtIndexPath:[NSIndexPath indexPathForRow:row inSection:1]];
    };
    select(0);
    HWPictureController* opened = (HWPictureController*)[navigation topViewController];
    ASSERT_TRUE([opened isKindOfClass:[HWPictureController class]]);
    EXPECT_EQ(text([opened path]), root.native(picture));
    EXPECT_NE([(UIImageView*)[opened view] image], nil);
    [navigation popViewControllerAnimated:NO];
    select(1);
    EXPECT_EQ([navigation topViewController], screen);

    // A history change made elsewhere redraws the open screen.
    testing::execSql(root.databaseFile(),
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
    EXPECT_FALSE(fs::exists(root.native(picture)));
    EXPECT_EQ(shownRows(screen).size(), 3u);

    // "Clear History" asks first.
    UIBarButtonItem* clear = [[screen navigationItem] rightBarButtonItem];
    tap(clear);
    EXPECT_EQ(answerAlert("Cancel"), "Every blocked message and its picture will be deleted.");
    EXPECT_EQ(shownRows(screen).size(), 3u);
    tap(clear);
    const std::size_t alerts = shownAlerts().size();
    answerAlert("Clear History");
    EXPECT_EQ(shownAlerts().size(), alerts) << "no problem to report";
    EXPECT_TRUE(shownRows(screen).empty());
    EXPECT_TRUE(runLoopUntil([&] { return changes >= 3; }));
    [pool release];
  });
  EXPECT_TRUE(testing::readHistoryRows(root.databaseFile()).empty());
  EXPECT_TRUE(fs::exists(root.native(kData + "/keep.txt")));
  EXPECT_TRUE(fs::exists(root.databaseFile()));
}

}  // namespace
}  // namespace hushwall::settings
