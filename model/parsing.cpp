// Cutting phone numbers, names and message texts out of the messenger's
// addresses ("number@server") and notification texts ("Name: message"), and
// judging SpringBoard's bulletins by their sender.
#include "model/hushwall.h"
#include "startup/start_up.h"

namespace hushwall {
namespace {

using host::Text;
using host::Value;

// The first occurrence of a one-character separator. Success is a found range
// of non-zero length, so an absent string (which answers a zero range) never
// has a separator.
std::optional<std::size_t> findSeparator(const host::OptText& text, const char16_t* separator) {
  host::Range found = host::rangeOfString(text, separator);
  if (found.length == 0) return std::nullopt;
  return found.location;
}

bool isString(const Value& value, const char* expected) {
  return value.text() == host::T(expected);
}

}  // namespace

host::OptText Hushwall::getPhoneNumber(const host::OptText& jid) {
  std::optional<std::size_t> at = findSeparator(jid, u"@");
  // Not an address: handed back as it came, not even trimmed.
  if (!at) return jid;
  return host::trimWhiteSpace(host::substringTo(*jid, *at));
}

host::OptText Hushwall::getMessage(const host::OptText& text) {
  std::optional<std::size_t> colon = findSeparator(text, u":");
  if (!colon) return text;
  // The text is "Name: message"; the one character after the colon is taken
  // to be the blank and skipped whatever it is. A colon at the very end puts
  // the start past the end, and the range exception is left to the caller.
  return host::trimWhiteSpace(host::substringFrom(*text, *colon + 2));
}

Text Hushwall::getName(const host::OptText& text) {
  // "Name: message" first; otherwise texts like "Name sent you a photo".
  std::optional<std::size_t> end = findSeparator(text, u":");
  if (!end) end = findSeparator(text, u" ");
  if (!end) return Text();
  return host::trimWhiteSpace(host::substringTo(*text, *end));
}

bool Hushwall::isBulletinBlocked(const host::Bulletin& bulletin) {
  if (bulletin.sectionID() != host::T(kWhatsAppBundleIdentifier)) return false;

  // Every step looks its path up again from the context: nothing is carried
  // from one test to the next.
  const Value context = bulletin.context();
  const Value type = context.objectForKey("notificationType");
  if (type.isNil()) return false;

  host::OptText number;
  if (isString(type, "AppNotificationLocal")) {
    if (context.objectForKey("userInfo").isNil()) return false;
    if (context.objectForKey("userInfo").objectForKey("jid").isNil()) return false;
    number = sharedInstance()->getPhoneNumber(
        context.objectForKey("userInfo").objectForKey("jid").text());
  } else if (isString(type, "AppNotificationRemote")) {
    if (context.objectForKey("userInfo").isNil()) return false;
    if (context.objectForKey("userInfo").objectForKey("aps").isNil()) return false;
    // A push without a text is not a message; a missing "alert" is treated
    // as a missing text.
    if (context.objectForKey("userInfo")
            .objectForKey("aps")
            .objectForKey("alert")
            .objectForKey("body")
            .isNil()) {
      return false;
    }
    if (context.objectForKey("userInfo").objectForKey("aps").objectForKey("u").isNil()) {
      return false;
    }
    // The push's sender address goes to the blacklist whole, server part and
    // all; the containment test still finds a listed number inside it.
    number = context.objectForKey("userInfo").objectForKey("aps").objectForKey("u").text();
  } else {
    return false;
  }
  return phoneNumberBlacklisted(number);
}

}  // namespace hushwall
