// The messenger's badge inside SpringBoard. While Hushwall is enabled the
// messenger may not raise its own badge (it would count blocked messages);
// instead the banner hook raises it by one for every notification it lets
// through. A one-shot flag lets that raise, and only that one, pass the
// setBadge: hook.
#include <cstdint>

#include "host/env.h"
#include "springboard/hooks.h"
#include "startup/settings.h"
#include "startup/start_up.h"

namespace hushwall {

host::IMP original_setBadge = nullptr;
bool acceptBadgeIncrement = false;

namespace {

using host::Args;
using host::Selector;
using host::Value;

// Looked up on first use rather than at start-up: SpringBoard registers its
// classes as it pleases, and a lookup that finds nothing is simply retried
// at the next increment.
Value applicationControllerClass;

// intValue + 1 as the platform's 32-bit int arithmetic does it: the largest
// badge wraps instead of being undefined.
std::int32_t plusOne(std::int32_t value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) + 1u);
}

}  // namespace

Value hook_setBadge(const Value& self, const Selector& cmd, const Args& args) {
  // Switched off, every badge passes, and a pending pass is left pending: the
  // flag is ours only while we are in charge of the badge.
  if (!settings_Enabled) return original_setBadge(self, cmd, args);

  const Value bundleIdentifier = host::env().runtime->send(self, "bundleIdentifier", {});
  if (bundleIdentifier.text() != host::T(kWhatsAppBundleIdentifier)) {
    // Another app's badge came first, so whatever pass was pending was not
    // followed by its own setBadge: don't let it leak to a later one.
    acceptBadgeIncrement = false;
    return original_setBadge(self, cmd, args);
  }
  if (acceptBadgeIncrement) {
    acceptBadgeIncrement = false;
    return original_setBadge(self, cmd, args);
  }
  // Clearing the badge (0, no value, or a text that reads as no number) is
  // always the messenger's right: it does so when the user has read the chats.
  if (args.at(0).intValue() == 0) {
    acceptBadgeIncrement = false;
    return original_setBadge(self, cmd, args);
  }
  // The messenger's own count: it may include blocked messages, so the icon
  // keeps what we put there.
  return Value();
}

Value addManualBadgeIncrementForBundleIdentifier(const Value&, const Selector&,
                                                 const Args& args) {
  host::Runtime& runtime = *host::env().runtime;
  if (applicationControllerClass.isNil()) {
    applicationControllerClass = runtime.getClass("SBApplicationController");
  }
  const Value controller = runtime.send(applicationControllerClass, "sharedInstance", {});
  const Value applications =
      runtime.send(controller, "applicationsWithBundleIdentifier:", {args.at(0)});
  const host::Array* list = applications.array();
  // An app SpringBoard does not know: nothing to raise, and no pass is
  // granted that nobody would use.
  if (list == nullptr || list->empty()) return Value();
  // Only the first of several installs with one identifier is raised.
  const Value application = list->front();

  acceptBadgeIncrement = true;
  const Value current = runtime.send(application, "badgeNumberOrString", {});
  // A text badge of exactly the base string class is not taken for a count:
  // counting starts afresh at 1. The test is for that class alone
  // (isMemberOfClass:), so a string of a subclass goes the number path with
  // everything else ("7" gives 8), and no badge at all reads as 0.
  const std::int32_t next = current.isMemberOfBaseStringClass() ? 1 : plusOne(current.intValue());
  runtime.send(application, "setBadge:", {Value::integer(next)});
  return Value();
}

}  // namespace hushwall
