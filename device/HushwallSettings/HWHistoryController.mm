#include "HWHistoryController.h"

#include "HWAttempt.h"
#include "HWScreenParts.h"
#include "HWSettingsServices.h"

using hushwall::companion::BlockKind;
using hushwall::companion::HistoryEntry;
using hushwall::companion::HistoryList;
using hushwall::settings::ns;

namespace {

HistoryList history() {
  return HistoryList(hushwall::settings::files(), hushwall::settings::notifications(),
                     hushwall::settings::localeDateFormat());
}

NSString* kindTitle(BlockKind kind) {
  switch (kind) {
    case BlockKind::kOwn: return @"Sent by you";
    case BlockKind::kNotification: return @"Blocked notification";
    case BlockKind::kIncoming: break;
  }
  return @"Blocked message";
}

}  // namespace

@implementation HWHistoryController

- (id)init {
  if ((self = [super initWithStyle:UITableViewStyleGrouped]) != nil) {
    _sections = new std::vector<hushwall::companion::HistorySection>;
    [self setTitle:@"History"];
    UIBarButtonItem* clear = [[[UIBarButtonItem alloc] initWithTitle:@"Clear History"
                                                               style:UIBarButtonItemStylePlain
                                                              target:self
                                                              action:@selector(clearTapped:)] autorelease];
    [[self navigationItem] setRightBarButtonItem:clear];
    hushwall::settings::relayHistoryChanges();
  }
  return self;
}

- (void)dealloc {
  if (_observing) [[NSNotificationCenter defaultCenter] removeObserver:self];
  delete _sections;
  [super dealloc];
}

- (void)viewWillAppear:(BOOL)animated {
  if (!_observing) {
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(historyChanged:)
                                                 name:hushwall::settings::kHistoryChangedNotification
                                               object:nil];
    _observing = YES;
  }
  [self reload];
  [super viewWillAppear:animated];
}

- (void)viewDidDisappear:(BOOL)animated {
  // Off screen (a picture on top, or gone back): the next appearance
  // re-reads the table anyway.
  if (_observing) [[NSNotificationCenter defaultCenter] removeObserver:self];
  _observing = NO;
  [super viewDidDisappear:animated];
}

- (void)historyChanged:(NSNotification*)notification {
  [self reload];
}

- (void)reload {
  std::vector<hushwall::companion::HistorySection>* sections = _sections;
  if (auto problem = HWAttempt([sections] { *sections = history().sections(); })) {
    _sections->clear();
    HWShowProblem(*problem);
  }
  UILabel* empty = HWEmptyStateLabel(@"No blocked messages.");
  [[self tableView] setBackgroundView:_sections->empty() ? empty : nil];
  [[[self navigationItem] rightBarButtonItem] setEnabled:!_sections->empty()];
  [[self tableView] reloadData];
}

- (const HistoryEntry*)entryAt:(NSIndexPath*)indexPath {
  const std::size_t section = (std::size_t)[indexPath section], row = (std::size_t)[indexPath row];
  if (section >= _sections->size() || row >= (*_sections)[section].entries.size()) return nullptr;
  return &(*_sections)[section].entries[row];
}

- (NSInteger)numberOfSectionsInTableView:(UITableView*)tableView {
  return (NSInteger)_sections->size();
}

- (NSString*)tableView:(UITableView*)tableView titleForHeaderInSection:(NSInteger)section {
  if ((std::size_t)section >= _sections->size()) return nil;
  return ns((*_sections)[(std::size_t)section].title);
}

- (NSInteger)tableView:(UITableView*)tableView numberOfRowsInSection:(NSInteger)section {
  if ((std::size_t)section >= _sections->size()) return 0;
  return (NSInteger)(*_sections)[(std::size_t)section].entries.size();
}

- (UITableViewCell*)tableView:(UITableView*)tableView cellForRowAtIndexPath:(NSIndexPath*)indexPath {
  UITableViewCell* cell = [tableView dequeueReusableCellWithIdentifier:@"message"];
  if (cell == nil) {
    cell = [[[UITableViewCell alloc] initWithStyle:UITableViewCellStyleSubtitle
                                   reuseIdentifier:@"message"] autorelease];
  }
  const HistoryEntry* entry = [self entryAt:indexPath];
  if (entry == nullptr) return cell;
  NSString* text = ns(entry->message);
  if ([text length] == 0 && entry->hasPicture) text = @"Picture";
  [[cell textLabel] setText:text];
  [[cell detailTextLabel] setText:[NSString stringWithFormat:@"%@ · %@ · %@", ns(entry->name),
                                                             kindTitle(entry->kind), ns(entry->date)]];
  [cell setAccessoryType:entry->hasPicture ? UITableViewCellAccessoryDisclosureIndicator
                                           : UITableViewCellAccessoryNone];
  [cell setSelectionStyle:entry->hasPicture ? UITableViewCellSelectionStyleDefault
                                            : UITableViewCellSelectionStyleNone];
  return cell;
}

- (void)tableView:(UITableView*)tableView didSelectRowAtIndexPath:(NSIndexPath*)indexPath {
  [tableView deselectRowAtIndexPath:indexPath animated:YES];
  const HistoryEntry* entry = [self entryAt:indexPath];
  if (entry == nullptr || !entry->hasPicture) return;
  HWPictureController* picture =
      [[[HWPictureController alloc] initWithPath:ns(entry->picturePath)] autorelease];
  [[self navigationController] pushViewController:picture animated:YES];
}

- (void)tableView:(UITableView*)tableView
    commitEditingStyle:(UITableViewCellEditingStyle)style
     forRowAtIndexPath:(NSIndexPath*)indexPath {
  const HistoryEntry* entry = [self entryAt:indexPath];
  if (style != UITableViewCellEditingStyleDelete || entry == nullptr) return;
  const std::int64_t id = entry->id;
  if (auto problem = HWAttempt([id] { history().remove(id); })) HWShowProblem(*problem);
  [self reload];
}

- (void)clearTapped:(id)sender {
  HWConfirm(self, @"Clear History", @"Every blocked message and its picture will be deleted.",
            @"Clear History", ^{
              if (auto problem = HWAttempt([] { history().clear(); })) HWShowProblem(*problem);
              [self reload];
            });
}

@end

@implementation HWPictureController

- (id)initWithPath:(NSString*)path {
  if ((self = [super init]) != nil) {
    _path = [path copy];
    [self setTitle:[path lastPathComponent]];
  }
  return self;
}

- (void)dealloc {
  [_path release];
  [super dealloc];
}

- (NSString*)path { return _path; }

- (void)loadView {
  UIImageView* picture =
      [[[UIImageView alloc] initWithImage:[UIImage imageWithContentsOfFile:_path]] autorelease];
  [picture setContentMode:UIViewContentModeScaleAspectFit];
  [self setView:picture];
}

@end
