#include "model/hushwall.h"

#include "host/env.h"
#include "startup/blacklist.h"
#include "startup/settings.h"

namespace hushwall {
namespace {

// The process's one model object. Never released: hooks may ask for it until
// the host process ends.
Hushwall* sharedHushwall = nullptr;

// The status-bar image shown while something has been blocked.
constexpr char kStatusBarImageName[] = "HSWL";

// The characters people type around a number, stripped one pass each in this
// order so that the result is the bare digits the messenger uses.
const char16_t* const kFormattingCharacters[] = {
    u"(", u")", u"-", u"+", u".", u"/", u"\u00A0", u" ",
};

// True when some entry of the in-memory blacklist occurs anywhere inside the
// number. The entry is looked for in the number, not the reverse, so an
// entry also covers the number with a "+" or a server part around it. An
// absent number counts as containing every entry, as a search on nil
// answers position 0; an empty entry matches nothing. A list not loaded yet
// counts as empty.
bool blacklistCovers(const host::OptText& number) {
  if (blacklistNumbers == nullptr) return false;
  for (const host::Text& entry : *blacklistNumbers) {
    if (host::containsByLocation(number, entry)) return true;
  }
  return false;
}

}  // namespace

Hushwall* Hushwall::sharedInstance() {
  // A plain null test: the hooks all run on host threads we do not own, and
  // a second instance made by a race behaves exactly like the first.
  if (sharedHushwall != nullptr) return sharedHushwall;
  sharedHushwall = (new Hushwall())->init();
  return sharedHushwall;
}

Hushwall* Hushwall::init() { return this; }

host::OptText Hushwall::unformattedPhoneNumber(const host::OptText& string) {
  if (!string) return std::nullopt;
  host::Text result = *string;
  for (const char16_t* character : kFormattingCharacters) {
    result = host::replaceOccurrences(result, character, host::Text());
  }
  return result;
}

bool Hushwall::existPhoneNumber(const host::OptText& number) { return blacklistCovers(number); }

bool Hushwall::phoneNumberBlacklisted(const host::OptText& number) {
  // The list comes first: a contact whose number is on the list stays blocked.
  if (blacklistCovers(number)) return true;
  if (!settings_ContactsOnly) return false;
  // Contacts-only mode lets through only the people the user knows. The
  // address book is asked afresh every time, so a new contact counts at once.
  return !host::env().addressBook->hasPersonMatchingPhoneNumber(number);
}

// Neither keeps any state or checks whether the icon is shown: the status bar
// tolerates repeated requests, and whoever asks has already decided.
void Hushwall::addStatusBarIcon() {
  host::env().statusBar->addImageNamed(host::T(kStatusBarImageName));
}

void Hushwall::removeStatusBarIcon() {
  host::env().statusBar->removeImageNamed(host::T(kStatusBarImageName));
}

}  // namespace hushwall
