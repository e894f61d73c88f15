#include "host/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace hushwall::host {
namespace {

const Text kGrinning = u"\U0001F600";  // one character, two UTF-16 code units
const std::string kFFFD = "\xEF\xBF\xBD";

TEST(TextConversion, Utf8AndUtf16BothWaysWithReplacementCharacters) {
  // Each bad byte or cut sequence becomes one U+FFFD; the rest survives.
  const std::pair<std::string, Text> decoded[] = {
      {"h\xC3\xA9llo", u"h\u00E9llo"}, {"\xF0\x9F\x98\x80", Text{0xD83D, 0xDE00}},
      {std::string("a\0b", 3), Text{u'a', 0, u'b'}}, {"34612345678@s.whatsapp.net", u"34612345678@s.whatsapp.net"},
      {"\x7F" "ab\xC3\xA9" "cd", u"\u007Fab\u00E9cd"}, {"a\xFF" "b", u"a\uFFFDb"},
      {"\xE2\x82" "x", u"\uFFFDx"}, {"\xE2\x82", u"\uFFFD"}, {"\xC0\xAF", u"\uFFFD\uFFFD"},
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}};
  for (const auto& [utf8, text] : decoded) EXPECT_EQ(T(utf8), text) << utf8;
  const std::pair<Text, std::string> encoded[] = {
      {u"h\u00E9llo \u20AC", "h\xC3\xA9llo \xE2\x82\xAC"}, {kGrinning, "\xF0\x9F\x98\x80"},
      {Text{0xD83D, u'a'}, kFFFD + "a"}, {Text{u'a', 0xDE00}, "a" + kFFFD},
      {Text{0xDE00, 0xD83D}, kFFFD + kFFFD}};  // lone high, lone low, reversed pair
  for (const auto& [text, utf8] : encoded) EXPECT_EQ(toUtf8(text), utf8) << utf8;
  EXPECT_EQ(kGrinning.size(), 2u);
  EXPECT_EQ(fromUtf8(static_cast<const char*>(nullptr)), std::nullopt);  // absent, not empty
  EXPECT_EQ(fromUtf8(""), OptText(Text()));
}

TEST(TextConversion, Utf8IsCheckedAndRepairedByTheSameRule) {
  for (std::string good : {std::string(), std::string("plain"), std::string("h\xC3\xA9 \xE2\x82\xAC"),
                           std::string("\xF0\x9F\x98\x80"), kFFFD, std::string("a\0b", 3),
                           std::string("\xF4\x8F\xBF\xBF"), std::string("\xDF\xBF\xE0\xA0\x80")}) {
    EXPECT_TRUE(isValidUtf8(good)) << good;
    EXPECT_EQ(repairUtf8(good), good);
  }
  // Overlong, a surrogate, above U+10FFFF, a lone continuation byte.
  for (const char* bad : {"bad\xFF", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80"}) {
    EXPECT_FALSE(isValidUtf8(bad)) << bad;
  }
  EXPECT_EQ(repairUtf8("bad\xFF"), "bad" + kFFFD);
  EXPECT_EQ(repairUtf8("\xE2\x82" "x"), kFFFD + "x");
  EXPECT_EQ(repairUtf8("\xF0\x90\x80"), kFFFD);  // cut after three bytes
  // Repairing agrees with converting, so every reader shows the same text.
  const std::string hostile = "x\xC3\xFF\xED\xBF\xBFy\xF0\x9F\x98";
  EXPECT_EQ(repairUtf8(hostile), toUtf8(fromUtf8(hostile)));
  EXPECT_TRUE(isValidUtf8(repairUtf8(hostile)));
}

TEST(TextSearch, WhiteSpaceAndLiteralSearchInUtf16Units) {
  // White space: tab and the space separators only.
  for (char16_t u : {0x0009, 0x0020, 0x00A0, 0x1680, 0x2000, 0x2005, 0x200A, 0x202F, 0x205F, 0x3000})
    EXPECT_TRUE(isWhiteSpace(u)) << std::hex << static_cast<int>(u);
  for (char16_t u : {0x000A, 0x000B, 0x000C, 0x000D, 0x0085, 0x1FFF, 0x200B, 0x2028, 0x2029, 0xFEFF, 0x3001, 0x0041})
    EXPECT_FALSE(isWhiteSpace(u)) << std::hex << static_cast<int>(u);
  // Searches: nil, empty, missing, first match, case, UTF-16 positions.
  const std::tuple<OptText, Text, Range> cases[] = {
      {std::nullopt, T("@"), {0, 0}}, {std::nullopt, Text(), {0, 0}}, {T("abc"), Text(), {kNotFound, 0}},
      {Text(), T("a"), {kNotFound, 0}}, {T("4917012345"), T("+49"), {kNotFound, 0}},
      {T("a@b@c"), T("@"), {1, 1}}, {T("+4917012345@srv"), T("4917012345"), {1, 10}},
      {kGrinning + u"@x", T("@"), {2, 1}},
      {u"x" + kGrinning, Text{0xDE00}, {2, 1}}};  // half a surrogate pair matches that half
  for (const auto& [in, needle, range] : cases) EXPECT_EQ(rangeOfString(in, needle), range) << toUtf8(needle);
  EXPECT_TRUE(containsByLocation(std::nullopt, T("4917")));
  EXPECT_FALSE(containsByLocation(T("abc"), Text()));
  EXPECT_FALSE(containsByLocation(T("Alice"), T("alice")));
}

TEST(TextEdits, SubstringTrimReplaceAndPaths) {
  EXPECT_EQ(substringTo(T("abc"), 0), Text());
  EXPECT_EQ(substringTo(T("abc"), 3), T("abc"));
  EXPECT_THROW(substringTo(T("abc"), 4), RangeException);
  EXPECT_EQ(substringFrom(T("Alice: "), 7), Text());
  EXPECT_THROW(substringFrom(T("Alice:"), 7), RangeException);
  EXPECT_THROW(substringFrom(Text(), 1), std::out_of_range);
  EXPECT_EQ(substringFrom(kGrinning + u"x", 1), (Text{0xDE00, u'x'}));
  // Trimming takes white space at both ends only, never line breaks.
  const std::pair<Text, Text> trimmed[] = {
      {u"\t\u00A0 a  b \u3000\u2009", T("a  b")}, {T("\na\r\n"), T("\na\r\n")}, {T(" \n a "), T("\n a")},
      {u"\u200Ba\uFEFF", u"\u200Ba\uFEFF"}, {u" \t\u3000", Text()}, {Text(), Text()}};
  for (const auto& [in, out] : trimmed) EXPECT_EQ(trimWhiteSpace(in), out) << toUtf8(in);
  // Literal, left to right, not overlapping, no re-scan of the output.
  const std::tuple<Text, Text, Text, Text> replaced[] = {
      {T("aaa"), T("aa"), T("b"), T("ba")}, {T("a-b-c"), T("-"), Text(), T("abc")},
      {T("a"), T("a"), T("aa"), T("aa")}, {T("abc"), Text(), T("x"), T("abc")}, {T("ABC"), T("b"), T("x"), T("ABC")}};
  for (const auto& [in, from, to, out] : replaced) EXPECT_EQ(replaceOccurrences(in, from, to), out) << toUtf8(in);
  // Joining collapses slashes and drops a trailing one.
  const std::tuple<Text, Text, Text> joined[] = {
      {T("/var/x"), T("/N/"), T("/var/x/N")}, {T("/var/x"), T("/HSWL.db"), T("/var/x/HSWL.db")},
      {T("/var/x"), T("//"), T("/var/x")}, {T("/var/x/"), T("y"), T("/var/x/y")},
      {T("/var/x/N"), T("/N-1.500000.png"), T("/var/x/N/N-1.500000.png")}, {T("/"), Text(), T("/")},
      {T("/"), T("x"), T("/x")}, {Text(), T("a//b/"), T("a/b")}};
  for (const auto& [path, part, out] : joined) EXPECT_EQ(appendingPathComponent(path, part), out) << toUtf8(out);
}

TEST(TextValues, BoolIntAndDoubleReadTheLeadingNumber) {
  for (const auto& [in, out] : std::vector<std::pair<Text, bool>>{
           {T("YES"), true}, {T(" +007"), true}, {T("-1"), true}, {T("0"), false}, {T("00"), false},
           {T("no"), false}, {Text(), false}, {T("true"), true}, {T("0x1"), false}, {T("\n1"), false},
           {u"\u3000y", true}, {T("\tT"), true}, {T("+"), false}, {T("-0"), false}, {T("0009"), true},
           {T("+-1"), false}}) {
    EXPECT_EQ(boolValue(in), out) << toUtf8(in);
  }
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
  for (const auto& [in, out] : std::vector<std::pair<Text, std::int32_t>>{
           {T(" -12abc"), -12}, {T("99999999999"), kMax}, {T("-99999999999"), kMin}, {T("2147483647"), kMax},
           {T("2147483648"), kMax}, {T("-2147483648"), kMin}, {T("-2147483647"), kMin + 1}, {T("+7"), 7},
           {T("\t42"), 42}, {T("\n42"), 0}, {T("1.9"), 1}, {T("- 5"), 0}, {T("abc"), 0}, {Text(), 0}}) {
    EXPECT_EQ(intValue(in), out) << toUtf8(in);
  }
  for (const auto& [in, out] : std::vector<std::pair<Text, double>>{
           {T("1.5"), 1.5}, {T(" -2.5e2x"), -250.0}, {T("1E3"), 1000.0}, {T("1e"), 1.0}, {T("2e+"), 2.0},
           {T("1e+5"), 1e5}, {T("2.5E-3"), 2.5e-3}, {T(".5"), 0.5}, {T("5."), 5.0}, {T("+.25"), 0.25},
           {T("."), 0.0}, {T("-"), 0.0}, {T("abc"), 0.0}, {u"\u00A03", 3.0}, {T("\n3"), 0.0},
           {T("1400000000.5"), 1400000000.5}, {T("1,5"), 1.0}}) {
    EXPECT_EQ(doubleValue(in), out) << toUtf8(in);
  }
}

TEST(TextFormat, PercentFSixDecimalsAndPercentAtInOrder) {
  const std::pair<double, const char*> doubles[] = {
      {1400000000.5, "1400000000.500000"}, {0.0, "0.000000"}, {-0.0, "-0.000000"}, {0.1234567, "0.123457"},
      {1e20, "100000000000000000000.000000"}, {std::nan(""), "nan"}, {-std::nan(""), "nan"},
      {HUGE_VAL, "inf"}, {-HUGE_VAL, "-inf"}};
  for (const auto& [value, text] : doubles) EXPECT_EQ(formatDouble(value), T(text)) << text;
  EXPECT_EQ(describe(std::nullopt), T("(null)"));
  EXPECT_EQ(describe(Text()), Text());
  EXPECT_EQ(formatObjects(T("/%@/"), {T("4917")}), T("/4917/"));
  EXPECT_EQ(formatObjects(T("/%@-%@.png"), {std::nullopt, T("1.5")}), T("/(null)-1.5.png"));
  EXPECT_EQ(formatObjects(T("%@ and %@"), {T("a")}), T("a and (null)"));
  EXPECT_EQ(formatObjects(T("%@"), {T("a"), T("b")}), T("a"));
  EXPECT_EQ(formatObjects(T("100%% %%@ %d %"), {T("x")}), T("100% %@ %d %"));
}

}  // namespace
}  // namespace hushwall::host
