// The table screens, navigation and text fields of UIKit, as far as the
// settings bundle uses them. Nothing is drawn: a pushed screen is loaded and
// told it appears. The screens' alerts are UIAlertView's (uikit.mm), shown
// and answered through the stand-in device (stand_in_device.h).
#import <UIKit/UIKit.h>

// What only the stand-in itself does to these objects.
@interface UIViewController (StandIn)
- (void)standInSetNavigationController:(UINavigationController*)navigationController;
@end

@implementation UIView
- (UIViewContentMode)contentMode { return _contentMode; }
- (void)setContentMode:(UIViewContentMode)mode { _contentMode = mode; }
@end

@implementation NSIndexPath (UIKitTableRows)
+ (NSIndexPath*)indexPathForRow:(NSInteger)row inSection:(NSInteger)section {
  NSUInteger indexes[2] = {(NSUInteger)section, (NSUInteger)row};
  return [NSIndexPath indexPathWithIndexes:indexes length:2];
}
- (NSInteger)row { return (NSInteger)[self indexAtPosition:1]; }
- (NSInteger)section { return (NSInteger)[self indexAtPosition:0]; }
@end

@implementation UIImage
+ (UIImage*)imageWithContentsOfFile:(NSString*)path {
  NSData* data = [NSData dataWithContentsOfFile:path];
  if (data == nil) return nil;
  UIImage* image = [[[UIImage alloc] init] autorelease];
  image->_data = [data retain];
  return image;
}
- (void)dealloc {
  [_data release];
  [super dealloc];
}
@end

@implementation UIImageView
- (id)initWithImage:(UIImage*)image {
  if ((self = [super init]) != nil) _image = [image retain];
  return self;
}
- (UIImage*)image { return _image; }
- (void)dealloc {
  [_image release];
  [super dealloc];
}
@end

@implementation UIBarButtonItem
- (id)initWithBarButtonSystemItem:(UIBarButtonSystemItem)item target:(id)target action:(SEL)action {
  if ((self = [super init]) != nil) {
    _title = [(item == UIBarButtonSystemItemAdd ? @"+" : @"") copy];
    _target = target;
    _action = action;
    _enabled = YES;
  }
  return self;
}
- (id)initWithTitle:(NSString*)title style:(UIBarButtonItemStyle)style target:(id)target
             action:(SEL)action {
  if ((self = [super init]) != nil) {
    _title = [title copy];
    _target = target;
    _action = action;
    _enabled = YES;
  }
  return self;
}
- (NSString*)title { return _title; }
- (id)target { return _target; }
- (SEL)action { return _action; }
- (BOOL)isEnabled { return _enabled; }
- (void)setEnabled:(BOOL)enabled { _enabled = enabled; }
- (void)dealloc {
  [_title release];
  [super dealloc];
}
@end

@implementation UINavigationItem
- (UIBarButtonItem*)rightBarButtonItem { return _rightBarButtonItem; }
- (void)setRightBarButtonItem:(UIBarButtonItem*)item {
  [item retain];
  [_rightBarButtonItem release];
  _rightBarButtonItem = item;
}
- (void)dealloc {
  [_rightBarButtonItem release];
  [super dealloc];
}
@end

@implementation UIViewController
- (NSString*)title { return _title; }
- (void)setTitle:(NSString*)title {
  [_title release];
  _title = [title copy];
}
- (UINavigationItem*)navigationItem {
  if (_navigationItem == nil) _navigationItem = [[UINavigationItem alloc] init];
  return _navigationItem;
}
- (UIView*)view {
  if (_view == nil) {
    [self loadView];
    [self viewDidLoad];
  }
  return _view;
}
- (void)loadView { [self setView:[[[UIView alloc] init] autorelease]]; }
- (void)setView:(UIView*)view {
  [view retain];
  [_view release];
  _view = view;
}
- (void)viewDidLoad {}
- (void)viewWillAppear:(BOOL)animated {}
- (void)viewDidDisappear:(BOOL)animated {}
- (UINavigationController*)navigationController { return _navigationController; }
- (void)standInSetNavigationController:(UINavigationController*)navigationController {
  _navigationController = navigationController;
}
- (void)dealloc {
  [_title release];
  [_navigationItem release];
  [_view release];
  [super dealloc];
}
@end

@implementation UINavigationController
- (id)initWithRootViewController:(UIViewController*)root {
  if ((self = [super init]) != nil) {
    _viewControllers = [[NSMutableArray alloc] init];
    [self pushViewController:root animated:NO];
  }
  return self;
}
- (void)pushViewController:(UIViewController*)controller animated:(BOOL)animated {
  [_viewControllers addObject:controller];
  [controller standInSetNavigationController:self];
  [controller view];
  [controller viewWillAppear:animated];
}
- (UIViewController*)popViewControllerAnimated:(BOOL)animated {
  if ([_viewControllers count] < 2) return nil;
  UIViewController* top = [[[_viewControllers lastObject] retain] autorelease];
  [_viewControllers removeLastObject];
  [top standInSetNavigationController:nil];
  [top viewDidDisappear:animated];
  [[self topViewController] viewWillAppear:animated];
  return top;
}
- (NSArray*)viewControllers { return _viewControllers; }
- (UIViewController*)topViewController { return [_viewControllers lastObject]; }
- (void)dealloc {
  for (UIViewController* controller in _viewControllers) {
    [controller standInSetNavigationController:nil];
  }
  [_viewControllers release];
  [super dealloc];
}
@end

@implementation UITableViewCell
- (id)initWithStyle:(UITableViewCellStyle)style reuseIdentifier:(NSString*)identifier {
  if ((self = [super init]) != nil) {
    _textLabel = [[UILabel alloc] init];
    if (style != UITableViewCellStyleDefault) _detailTextLabel = [[UILabel alloc] init];
    _reuseIdentifier = [identifier copy];
    _selectionStyle = UITableViewCellSelectionStyleDefault;
  }
  return self;
}
- (UILabel*)textLabel { return _textLabel; }
- (UILabel*)detailTextLabel { return _detailTextLabel; }
- (UITableViewCellAccessoryType)accessoryType { return _accessoryType; }
- (void)setAccessoryType:(UITableViewCellAccessoryType)type { _accessoryType = type; }
- (UITableViewCellSelectionStyle)selectionStyle { return _selectionStyle; }
- (void)setSelectionStyle:(UITableViewCellSelectionStyle)style { _selectionStyle = style; }
- (void)dealloc {
  [_textLabel release];
  [_detailTextLabel release];
  [_reuseIdentifier release];
  [super dealloc];
}
@end

@implementation UITableView
- (id)dataSource { return _dataSource; }
- (void)setDataSource:(id)dataSource { _dataSource = dataSource; }
- (id)delegate { return _delegate; }
- (void)setDelegate:(id)delegate { _delegate = delegate; }
- (UIView*)backgroundView { return _backgroundView; }
- (void)setBackgroundView:(UIView*)view {
  [view retain];
  [_backgroundView release];
  _backgroundView = view;
}
- (void)reloadData { ++_reloads; }
- (NSInteger)reloadCount { return _reloads; }
- (UITableViewCell*)dequeueReusableCellWithIdentifier:(NSString*)identifier { return nil; }
- (void)deselectRowAtIndexPath:(NSIndexPath*)indexPath animated:(BOOL)animated {}
- (void)dealloc {
  [_backgroundView release];
  [super dealloc];
}
@end

@implementation UITableViewController
- (id)initWithStyle:(UITableViewStyle)style {
  if ((self = [super init]) != nil) {
    _tableView = [[UITableView alloc] init];
    [_tableView setDataSource:self];
    [_tableView setDelegate:self];
  }
  return self;
}
- (id)init { return [self initWithStyle:UITableViewStylePlain]; }
- (UITableView*)tableView { return _tableView; }
- (void)loadView { [self setView:_tableView]; }
- (void)viewWillAppear:(BOOL)animated { [_tableView reloadData]; }
- (NSInteger)tableView:(UITableView*)tableView numberOfRowsInSection:(NSInteger)section { return 0; }
- (UITableViewCell*)tableView:(UITableView*)tableView cellForRowAtIndexPath:(NSIndexPath*)indexPath {
  return nil;
}
- (void)dealloc {
  [_tableView release];
  [super dealloc];
}
@end

@implementation UITextField
- (NSString*)text { return _text; }
- (void)setText:(NSString*)text {
  [_text release];
  _text = [text copy];
}
- (NSString*)placeholder { return _placeholder; }
- (void)setPlaceholder:(NSString*)placeholder {
  [_placeholder release];
  _placeholder = [placeholder copy];
}
- (UIKeyboardType)keyboardType { return _keyboardType; }
- (void)setKeyboardType:(UIKeyboardType)type { _keyboardType = type; }
- (BOOL)isSecureTextEntry { return _secureTextEntry; }
- (void)setSecureTextEntry:(BOOL)secure { _secureTextEntry = secure; }
- (void)dealloc {
  [_text release];
  [_placeholder release];
  [super dealloc];
}
@end
