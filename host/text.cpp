#include "host/text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace hushwall::host {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isHighSurrogate(char32_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool isLowSurrogate(char32_t u) { return u >= 0xDC00 && u <= 0xDFFF; }
bool isDigit(char16_t u) { return u >= u'0' && u <= u'9'; }

void appendUtf16(Text& out, char32_t cp) {
  if (cp < 0x10000) {
    out.push_back(static_cast<char16_t>(cp));
  } else {
    cp -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
  }
}

void appendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

// Decodes one UTF-8 sequence at `pos` and advances past it. A bad sequence
// yields U+FFFD and consumes only its longest valid beginning (at least one
// byte), so one damaged byte costs one replacement character and the text
// after it survives. The second-byte bounds reject overlong forms, UTF-16
// surrogates and values above U+10FFFF.
char32_t decodeUtf8(std::string_view in, std::size_t& pos) {
  auto byte = [&](std::size_t i) { return static_cast<unsigned char>(in[i]); };
  unsigned char lead = byte(pos++);
  if (lead < 0x80) return lead;
  int more = 0;
  char32_t cp = 0;
  unsigned char lo = 0x80, hi = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    more = 1, cp = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    more = 2, cp = lead & 0x0F;
    if (lead == 0xE0) lo = 0xA0;
    if (lead == 0xED) hi = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    more = 3, cp = lead & 0x07;
    if (lead == 0xF0) lo = 0x90;
    if (lead == 0xF4) hi = 0x8F;
  } else {
    return kReplacement;
  }
  for (int i = 0; i < more; ++i) {
    if (pos >= in.size() || byte(pos) < lo || byte(pos) > hi) return kReplacement;
    cp = (cp << 6) | (byte(pos++) & 0x3F);
    lo = 0x80, hi = 0xBF;
  }
  return cp;
}

std::size_t skipWhiteSpace(const Text& text, std::size_t i) {
  while (i < text.size() && isWhiteSpace(text[i])) ++i;
  return i;
}

// Runs of "/" become one, and a final "/" goes unless it is all that is
// left: "/var/x" + "/N/" gives "/var/x/N", as the platform joins paths.
Text normalisedPath(const Text& joined) {
  Text out;
  for (char16_t u : joined) {
    if (u == u'/' && !out.empty() && out.back() == u'/') continue;
    out.push_back(u);
  }
  if (out.size() > 1 && out.back() == u'/') out.pop_back();
  return out;
}

}  // namespace

void assignFromUtf8(Text& out, std::string_view utf8) {
  // Numbers, JIDs, keys and stored rows are plain ASCII nearly always, and
  // the blacklist reload converts every row: the ASCII prefix is widened unit
  // by unit, and only what follows it is decoded.
  std::size_t ascii = 0;
  while (ascii < utf8.size() && static_cast<unsigned char>(utf8[ascii]) < 0x80) ++ascii;
  out.clear();
  out.reserve(utf8.size());
  out.resize(ascii);
  char16_t* units = out.data();
  for (std::size_t i = 0; i < ascii; ++i) units[i] = static_cast<char16_t>(utf8[i]);
  for (std::size_t pos = ascii; pos < utf8.size();) appendUtf16(out, decodeUtf8(utf8, pos));
}

Text fromUtf8(std::string_view utf8) {
  Text out;
  assignFromUtf8(out, utf8);
  return out;
}

OptText fromUtf8(const char* utf8OrNull) {
  if (utf8OrNull == nullptr) return std::nullopt;
  return fromUtf8(std::string_view(utf8OrNull));
}

std::string toUtf8(const Text& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t u = text[i];
    if (isHighSurrogate(u) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
      u = 0x10000 + ((u - 0xD800) << 10) + (text[++i] - 0xDC00);
    } else if (isHighSurrogate(u) || isLowSurrogate(u)) {
      u = kReplacement;
    }
    appendUtf8(out, u);
  }
  return out;
}

bool isValidUtf8(std::string_view bytes) {
  for (std::size_t pos = 0; pos < bytes.size();) {
    const std::size_t start = pos;
    // A replacement character is either decoded from its own well-formed
    // bytes or stands for a bad sequence, which never spells EF BF BD.
    if (decodeUtf8(bytes, pos) == kReplacement && bytes.substr(start, pos - start) != "\xEF\xBF\xBD") {
      return false;
    }
  }
  return true;
}

std::string repairUtf8(std::string_view bytes) {
  if (isValidUtf8(bytes)) return std::string(bytes);
  std::string out;
  out.reserve(bytes.size() + 8);
  for (std::size_t pos = 0; pos < bytes.size();) appendUtf8(out, decodeUtf8(bytes, pos));
  return out;
}

bool isWhiteSpace(char16_t unit) {
  switch (unit) {
    case 0x0009: case 0x0020: case 0x00A0: case 0x1680:
    case 0x202F: case 0x205F: case 0x3000:
      return true;
    default:
      return unit >= 0x2000 && unit <= 0x200A;
  }
}

Text substringTo(const Text& text, std::size_t index) {
  if (index > text.size()) {
    throw RangeException("substringToIndex: index " + std::to_string(index) +
                         " out of bounds; string length " + std::to_string(text.size()));
  }
  return text.substr(0, index);
}

Text substringFrom(const Text& text, std::size_t index) {
  if (index > text.size()) {
    throw RangeException("substringFromIndex: index " + std::to_string(index) +
                         " out of bounds; string length " + std::to_string(text.size()));
  }
  return text.substr(index);
}

Text trimWhiteSpace(const Text& text) {
  std::size_t begin = skipWhiteSpace(text, 0);
  std::size_t end = text.size();
  while (end > begin && isWhiteSpace(text[end - 1])) --end;
  return text.substr(begin, end - begin);
}

Text replaceOccurrences(const Text& text, const Text& target, const Text& replacement) {
  if (target.empty()) return text;
  Text out;
  std::size_t from = 0;
  for (std::size_t at; (at = text.find(target, from)) != Text::npos; from = at + target.size()) {
    out.append(text, from, at - from).append(replacement);
  }
  return out.append(text, from, Text::npos);
}

bool boolValue(const Text& text) {
  std::size_t i = skipWhiteSpace(text, 0);
  if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) ++i;
  while (i < text.size() && text[i] == u'0') ++i;
  if (i == text.size()) return false;
  char16_t u = text[i];
  return u == u'Y' || u == u'y' || u == u'T' || u == u't' || (u >= u'1' && u <= u'9');
}

std::int32_t intValue(const Text& text) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
  constexpr std::int64_t kMin = std::numeric_limits<std::int32_t>::min();
  std::size_t i = skipWhiteSpace(text, 0);
  bool negative = false;
  if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) negative = text[i++] == u'-';
  // Accumulating the magnitude with a cap one past INT32_MAX keeps the sum in
  // range however many digits follow, and still tells INT32_MIN apart.
  std::int64_t magnitude = 0;
  for (; i < text.size() && isDigit(text[i]); ++i) {
    magnitude = std::min(magnitude * 10 + (text[i] - u'0'), kMax + 1);
  }
  std::int64_t value = negative ? -magnitude : magnitude;
  return static_cast<std::int32_t>(std::clamp(value, kMin, kMax));
}

double doubleValue(const Text& text) {
  // Copy the longest prefix of the form [sign] digits [. digits] [e [sign]
  // digits] as ASCII; an exponent marker without digits is not part of it.
  std::size_t i = skipWhiteSpace(text, 0);
  std::string ascii;
  auto take = [&] { ascii.push_back(static_cast<char>(text[i++])); };
  auto takeDigits = [&] {
    std::size_t n = 0;
    for (; i < text.size() && isDigit(text[i]); ++n) take();
    return n;
  };
  if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) take();
  std::size_t digits = takeDigits();
  if (i < text.size() && text[i] == u'.') {
    take();
    digits += takeDigits();
  }
  if (digits == 0) return 0.0;
  if (i < text.size() && (text[i] == u'e' || text[i] == u'E')) {
    std::size_t mark = i, kept = ascii.size();
    take();
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) take();
    if (takeDigits() == 0) i = mark, ascii.resize(kept);
  }
  // The library never changes the C locale, so strtod reads "." as the
  // decimal point, as the platform does regardless of the user's locale.
  return std::strtod(ascii.c_str(), nullptr);
}

Text appendingPathComponent(const Text& path, const Text& component) {
  if (path.empty()) return normalisedPath(component);
  return normalisedPath(path + u'/' + component);
}

Text formatDouble(double value) {
  // glibc prints a NaN with its sign bit as "-nan"; the platform prints "nan".
  if (std::isnan(value)) return u"nan";
  // Same C-locale assumption as doubleValue: "." is the decimal point.
  int size = std::snprintf(nullptr, 0, "%f", value);
  std::string buffer(static_cast<std::size_t>(size) + 1, '\0');
  std::snprintf(buffer.data(), buffer.size(), "%f", value);
  buffer.resize(static_cast<std::size_t>(size));
  return fromUtf8(buffer);
}

Text describe(const OptText& object) { return object ? *object : Text(u"(null)"); }

Text formatObjects(const Text& format, const std::vector<OptText>& arguments) {
  Text out;
  std::size_t next = 0;
  for (std::size_t i = 0; i < format.size(); ++i) {
    char16_t u = format[i];
    char16_t following = i + 1 < format.size() ? format[i + 1] : u'\0';
    if (u == u'%' && following == u'@') {
      out += describe(next < arguments.size() ? arguments[next] : std::nullopt);
      ++next, ++i;
    } else if (u == u'%' && following == u'%') {
      out.push_back(u'%');
      ++i;
    } else {
      out.push_back(u);
    }
  }
  return out;
}

bool caseInsensitiveEquals(const OptText& receiver, const Text& other) {
  if (!receiver) return true;
  if (receiver->size() != other.size()) return false;
  auto fold = [](char16_t c) { return (c >= u'A' && c <= u'Z') ? char16_t(c - u'A' + u'a') : c; };
  for (std::size_t i = 0; i < other.size(); ++i) {
    if (fold((*receiver)[i]) != fold(other[i])) return false;
  }
  return true;
}

}  // namespace hushwall::host
