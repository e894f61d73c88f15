#include "HWScreenParts.h"

#include "HWSettingsServices.h"

void HWShowProblem(UIViewController* controller, const std::string& message) {
  UIAlertController* alert =
      [UIAlertController alertControllerWithTitle:@"Hushwall"
                                          message:hushwall::settings::ns(message)
                                   preferredStyle:UIAlertControllerStyleAlert];
  [alert addAction:[UIAlertAction actionWithTitle:@"OK" style:UIAlertActionStyleCancel handler:nil]];
  [controller presentViewController:alert animated:YES completion:nil];
}

UILabel* HWEmptyStateLabel(NSString* text) {
  UILabel* label = [[[UILabel alloc] init] autorelease];
  [label setText:text];
  return label;
}
