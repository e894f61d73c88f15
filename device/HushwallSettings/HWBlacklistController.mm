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
    HWShowProblem(*problem);
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
  if (auto problem = HWAttempt([id] { editor().removeEntry(id); })) HWShowProblem(*problem);
  [self reload];
}

- (void)addTapped:(id)sender {
  HWAskForNumberAndName(self, @"Add to Blacklist",
                        @"Messages and notifications from every number that contains this one "
                        @"are blocked.",
                        ^(NSString* number, NSString* name) { [self addNumber:number name:name]; });
}

- (void)addNumber:(NSString*)number name:(NSString*)name {
  const std::string phoneNumber = utf8(number), shownName = utf8(name);
  if (auto problem = HWAttempt([&] { editor().add(phoneNumber, shownName); })) {
    HWShowProblem(*problem);
  }
  [self reload];
}

@end
