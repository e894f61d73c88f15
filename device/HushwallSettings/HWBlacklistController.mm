#include "HWBlacklistController.h"

#include "HWAttempt.h"
#include "HWScreenParts.h"
#include "HWSettingsServices.h"

using hushwall::companion::BlacklistEditor;
using hushwall::settings::ns;
using hushwall::settings::utf8;

namespace {

BlacklistEditor editor() {
  return BlacklistEditor(hushwall::settings::files(), hushwall::settings::notifications());
}

}  // namespace

@implementation HWBlacklistController

- (id)init {
  if ((self = [super initWithStyle:UITableViewStylePlain]) != nil) {
    _entries = new std::vector<hushwall::companion::BlacklistEntry>;
    [self setTitle:@"Blacklist"];
    UIBarButtonItem* add =
        [[[UIBarButtonItem alloc] initWithBarButtonSystemItem:UIBarButtonSystemItemAdd
                                                       target:self
                                                       action:@selector(addTapped:)] autorelease];
    [[self navigationItem] setRightBarButtonItem:add];
  }
  return self;
}

- (void)dealloc {
  delete _entries;
  [super dealloc];
}

- (void)viewWillAppear:(BOOL)animated {
  [self reload];
  [super viewWillAppear:animated];
}

- (void)reload {
  std::vector<hushwall::companion::BlacklistEntry>* entries = _entries;
  if (auto problem = HWAttempt([entries] { *entries = editor().entries(); })) {
    _entries->clear();
    HWShowProblem(self, *problem);
  }
  UILabel* empty = HWEmptyStateLabel(@"No blocked numbers. Tap + to add one.");
  [[self tableView] setBackgroundView:_entries->empty() ? empty : nil];
  [[self tableView] reloadData];
}

- (NSInteger)tableView:(UITableView*)tableView numberOfRowsInSection:(NSInteger)section {
  return (NSInteger)_entries->size();
}

- (UITableViewCell*)tableView:(UITableView*)tableView cellForRowAtIndexPath:(NSIndexPath*)indexPath {
  UITableViewCell* cell = [tableView dequeueReusableCellWithIdentifier:@"number"];
  if (cell == nil) {
    cell = [[[UITableViewCell alloc] initWithStyle:UITableViewCellStyleSubtitle
                                   reuseIdentifier:@"number"] autorelease];
    [cell setSelectionStyle:UITableViewCellSelectionStyleNone];
  }
  if ((std::size_t)[indexPath row] >= _entries->size()) return cell;
  const auto& entry = (*_entries)[(std::size_t)[indexPath row]];
  [[cell textLabel] setText:ns(entry.phoneNumber)];
  [[cell detailTextLabel] setText:ns(entry.name)];
  return cell;
}

- (void)tableView:(UITableView*)tableView
    commitEditingStyle:(UITableViewCellEditingStyle)style
     forRowAtIndexPath:(NSIndexPath*)indexPath {
  if (style != UITableViewCellEditingStyleDelete) return;
  if ((std::size_t)[indexPath row] >= _entries->size()) return;
  const std::int64_t id = (*_entries)[(std::size_t)[indexPath row]].id;
  if (auto problem = HWAttempt([id] { editor().removeEntry(id); })) HWShowProblem(self, *problem);
  [self reload];
}

- (void)addTapped:(id)sender {
  UIAlertController* alert = [UIAlertController
      alertControllerWithTitle:@"Add to Blacklist"
                       message:@"Messages and notifications from every number that contains "
                               @"this one are blocked."
                preferredStyle:UIAlertControllerStyleAlert];
  [alert addTextFieldWithConfigurationHandler:^(UITextField* field) {
    [field setPlaceholder:@"Phone number"];
    [field setKeyboardType:UIKeyboardTypePhonePad];
  }];
  [alert addTextFieldWithConfigurationHandler:^(UITextField* field) {
    [field setPlaceholder:@"Name"];
  }];
  // Not retained by the block (manual reference counting): the alert owns
  // the action, which owns the block.
  __block UIAlertController* shown = alert;
  [alert addAction:[UIAlertAction actionWithTitle:@"Cancel" style:UIAlertActionStyleCancel handler:nil]];
  [alert addAction:[UIAlertAction actionWithTitle:@"Add"
                                            style:UIAlertActionStyleDefault
                                          handler:^(UIAlertAction*) {
                                            NSArray* fields = [shown textFields];
                                            [self addNumber:[[fields objectAtIndex:0] text]
                                                       name:[[fields objectAtIndex:1] text]];
                                          }]];
  [self presentViewController:alert animated:YES completion:nil];
}

- (void)addNumber:(NSString*)number name:(NSString*)name {
  const std::string phoneNumber = utf8(number), shownName = utf8(name);
  if (auto problem = HWAttempt([&] { editor().add(phoneNumber, shownName); })) {
    HWShowProblem(self, *problem);
  }
  [self reload];
}

@end
