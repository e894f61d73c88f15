// The platform's string rules, in one place.
//
// Hushwall's decisions are string work whose edge cases come from the
// platform's string class, not from C++: positions and lengths count UTF-16
// code units, an absent string (nil) is not the empty string and answers every
// question with zero, white space is the tab plus Unicode's space separators
// (line breaks are not white space), and searches are literal, case-sensitive
// and find the first occurrence. Every other module goes through these
// helpers so that each rule is written, and tested, once.
#ifndef HUSHWALL_HOST_TEXT_H_
#define HUSHWALL_HOST_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace hushwall::host {

// A string as the platform holds it: a sequence of UTF-16 code units, which
// may include lone surrogates.
using Text = std::u16string;

// A string that may be absent (nil). Absent and empty are different values.
using OptText = std::optional<Text>;

// What a search reports when it finds nothing (the platform's NSNotFound).
inline constexpr std::size_t kNotFound = static_cast<std::size_t>(INT64_MAX);

// A range of UTF-16 code units, as the platform's search returns it.
struct Range {
  std::size_t location;
  std::size_t length;
  bool operator==(const Range& other) const {
    return location == other.location && length == other.length;
  }
};

// Raised where the platform raises its range exception: a substring that
// starts past the end of the string. Nothing in the library catches it.
class RangeException : public std::out_of_range {
 public:
  using std::out_of_range::out_of_range;
};

// --- Conversions at the boundaries (SQLite, files, D-Bus, JSON) ----------

// UTF-8 to UTF-16. Invalid byte sequences become U+FFFD.
Text fromUtf8(std::string_view utf8);
// The same into `out`, replacing its content and reusing its storage, for
// reloads that convert many rows into strings that are replaced anyway.
void assignFromUtf8(Text& out, std::string_view utf8);
// A C string that may be null (sqlite3_column_text, for one): null is absent.
OptText fromUtf8(const char* utf8OrNull);
// UTF-16 to UTF-8. A lone surrogate becomes U+FFFD.
std::string toUtf8(const Text& text);
// True when `bytes` is well-formed UTF-8 (no overlong form, surrogate or
// value above U+10FFFF). NUL is a character like any other.
bool isValidUtf8(std::string_view bytes);
// `bytes` with every ill-formed sequence replaced by U+FFFD, by the rule
// fromUtf8 uses; well-formed input comes back unchanged. For text read from
// files and databases that another writer may have filled with any bytes.
std::string repairUtf8(std::string_view bytes);
// Shorthand for literals in code and tests: u8"..." style input.
inline Text T(std::string_view utf8) { return fromUtf8(utf8); }

// --- Character classes ---------------------------------------------------

// The platform's white-space set: tab (U+0009) and category Zs (U+0020,
// U+00A0, U+1680, U+2000..U+200A, U+202F, U+205F, U+3000).
bool isWhiteSpace(char16_t unit);

// --- Searching and cutting -------------------------------------------------

// rangeOfString: without options. Literal, case-sensitive, first occurrence.
//  - absent receiver: {0, 0} (a message to nil answers zeros), which callers
//    that test location != kNotFound count as a match;
//  - empty needle: {kNotFound, 0};
//  - not found: {kNotFound, 0}.
//
// Inline, like the next one: the blacklist test runs it once per entry for
// every incoming message and notification, and a call into the shared host
// library per entry would cost as much as the search itself.
inline Range rangeOfString(const OptText& receiver, const Text& needle) {
  // A message to nil answers a zeroed struct, before any argument is looked at.
  if (!receiver) return {0, 0};
  if (needle.empty()) return {kNotFound, 0};
  const std::size_t at = receiver->find(needle);
  if (at == Text::npos) return {kNotFound, 0};
  return {at, needle.size()};
}

// True when `needle` occurs in `receiver` by the platform's test
// "location != NSNotFound" (so an absent receiver counts as containing it).
inline bool containsByLocation(const OptText& receiver, const Text& needle) {
  return rangeOfString(receiver, needle).location != kNotFound;
}

// substringToIndex: the first `index` code units. Raises RangeException when
// index > length.
Text substringTo(const Text& text, std::size_t index);
// substringFromIndex: from `index` to the end; index == length gives "".
// Raises RangeException when index > length.
Text substringFrom(const Text& text, std::size_t index);

// stringByTrimmingCharactersInSet: with the white-space set: both ends only.
Text trimWhiteSpace(const Text& text);

// stringByReplacingOccurrencesOfString:withString: literal, left to right,
// non-overlapping. An empty target leaves the text unchanged.
Text replaceOccurrences(const Text& text, const Text& target, const Text& replacement);

// caseInsensitiveCompare: == NSOrderedSame. An absent receiver answers 0,
// which is NSOrderedSame, so it equals everything. Case folding covers ASCII
// letters, which is all the identifiers compared here contain.
bool caseInsensitiveEquals(const OptText& receiver, const Text& other);

// --- Values of strings -----------------------------------------------------

// boolValue: skip leading white space, an optional sign and leading zeros;
// then YES on 'Y', 'y', 'T', 't' or a digit 1-9, NO on anything else.
bool boolValue(const Text& text);
// intValue: skip leading white space, optional sign, decimal digits; 0 when
// there are none; clamps to INT32_MIN / INT32_MAX on overflow.
std::int32_t intValue(const Text& text);
// doubleValue: leading white space, then a decimal floating-point prefix;
// 0.0 when there is none.
double doubleValue(const Text& text);

// --- Paths and formatting ----------------------------------------------

// stringByAppendingPathComponent: joins with "/", then collapses runs of "/"
// into one and drops a trailing "/" (except for the root "/" itself).
Text appendingPathComponent(const Text& path, const Text& component);

// "%f": six decimals, as printf prints a double.
Text formatDouble(double value);

// "%@" with an object argument: the text itself, or "(null)" when absent.
Text describe(const OptText& object);

// A format whose only directives are "%@" (and "%%"), filled in order with
// describe() of each argument. Missing arguments print "(null)".
Text formatObjects(const Text& format, const std::vector<OptText>& arguments);

}  // namespace hushwall::host

#endif  // HUSHWALL_HOST_TEXT_H_
