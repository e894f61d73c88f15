#include "host/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace hushwall::host {
namespace {

const Text kGrinning = u"\U0001F600";  // one character, two UTF-16 code units

TEST(TextConversion, RoundTripsAndSurrogatePairs) {
  EXPECT_EQ(T("h\xC3\xA9llo"), u"h\u00E9llo");
  EXPECT_EQ(toUtf8(u"h\u00E9llo \u20AC"), "h\xC3\xA9llo \xE2\x82\xAC");
  EXPECT_EQ(T("\xF0\x9F\x98\x80"), (Text{0xD83D, 0xDE00}));
  EXPECT_EQ(toUtf8(kGrinning), "\xF0\x9F\x98\x80");
  EXPECT_EQ(kGrinning.size(), 2u);
  EXPECT_EQ(fromUtf8(std::string_view("a\0b", 3)), (Text{u'a', 0, u'b'}));
  // All ASCII, and ASCII on both sides of a multi-byte character.
  EXPECT_EQ(T("34612345678@s.whatsapp.net"), u"34612345678@s.whatsapp.net");
  EXPECT_EQ(T("\x7F" "ab\xC3\xA9" "cd"), u"\u007Fab\u00E9cd");
}

TEST(TextConversion, BadInputBecomesReplacementCharacter) {
  EXPECT_EQ(toUtf8(Text{0xD83D, u'a'}), "\xEF\xBF\xBD" "a");  // high without low
  EXPECT_EQ(toUtf8(Text{u'a', 0xDE00}), "a\xEF\xBF\xBD");     // low without high
  EXPECT_EQ(toUtf8(Text{0xDE00, 0xD83D}), "\xEF\xBF\xBD\xEF\xBF\xBD");  // reversed pair
  EXPECT_EQ(T("a\xFF" "b"), u"a\uFFFDb");
  EXPECT_EQ(T("\xE2\x82" "x"), u"\uFFFDx");  // truncated sequence: one replacement
  EXPECT_EQ(T("\xE2\x82"), u"\uFFFD");         // truncated at the very end
  EXPECT_EQ(T("\xC0\xAF"), u"\uFFFD\uFFFD");   // overlong "/"
  EXPECT_EQ(T("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");  // above U+10FFFF
}

TEST(TextConversion, Utf8IsCheckedAndRepairedByTheSameRule) {
  for (std::string good : {std::string(), std::string("plain"), std::string("h\xC3\xA9 \xE2\x82\xAC"),
                           std::string("\xF0\x9F\x98\x80"), std::string("\xEF\xBF\xBD"),
                           std::string("a\0b", 3), std::string("\xF4\x8F\xBF\xBF")}) {
    EXPECT_TRUE(isValidUtf8(good)) << good;
    EXPECT_EQ(repairUtf8(good), good);
  }
  // Each bad byte or cut sequence costs one replacement; the rest survives.
  EXPECT_FALSE(isValidUtf8("bad\xFF"));
  EXPECT_EQ(repairUtf8("bad\xFF"), "bad\xEF\xBF\xBD");
  EXPECT_EQ(repairUtf8("\xE2\x82" "x"), "\xEF\xBF\xBD" "x");
  EXPECT_EQ(repairUtf8("\xF0\x90\x80"), "\xEF\xBF\xBD");  // cut after three bytes
  EXPECT_FALSE(isValidUtf8("\xC0\xAF"));                    // overlong
  EXPECT_FALSE(isValidUtf8("\xED\xA0\x80"));                // a surrogate
  EXPECT_FALSE(isValidUtf8("\xF4\x90\x80\x80"));            // above U+10FFFF
  EXPECT_FALSE(isValidUtf8("\x80"));
  // Repairing agrees with converting, so every reader shows the same text.
  const std::string hostile = "x\xC3\xFF\xED\xBF\xBFy\xF0\x9F\x98";
  EXPECT_EQ(repairUtf8(hostile), toUtf8(fromUtf8(hostile)));
  EXPECT_TRUE(isValidUtf8(repairUtf8(hostile)));
}

TEST(TextConversion, NullCStringIsAbsentNotEmpty) {
  EXPECT_EQ(fromUtf8(static_cast<const char*>(nullptr)), std::nullopt);
  EXPECT_EQ(fromUtf8(""), OptText(Text()));
}

TEST(TextWhiteSpace, TabAndSpaceSeparatorsOnly) {
  for (char16_t u : {0x0009, 0x0020, 0x00A0, 0x1680, 0x2000, 0x2005, 0x200A, 0x202F, 0x205F,
                     0x3000}) {
    EXPECT_TRUE(isWhiteSpace(u)) << std::hex << static_cast<int>(u);
  }
  for (char16_t u : {0x000A, 0x000B, 0x000C, 0x000D, 0x0085, 0x1FFF, 0x200B, 0x2028, 0x2029,
                     0xFEFF, 0x3001, 0x0041}) {
    EXPECT_FALSE(isWhiteSpace(u)) << std::hex << static_cast<int>(u);
  }
}

TEST(TextSearch, NilEmptyMissingFirstAndCase) {
  EXPECT_EQ(rangeOfString(std::nullopt, T("@")), (Range{0, 0}));
  EXPECT_EQ(rangeOfString(std::nullopt, Text()), (Range{0, 0}));
  EXPECT_TRUE(containsByLocation(std::nullopt, T("4917")));
  EXPECT_EQ(rangeOfString(T("abc"), Text()), (Range{kNotFound, 0}));
  EXPECT_FALSE(containsByLocation(T("abc"), Text()));
  EXPECT_EQ(rangeOfString(Text(), T("a")), (Range{kNotFound, 0}));
  EXPECT_EQ(rangeOfString(T("4917012345"), T("+49")), (Range{kNotFound, 0}));
  EXPECT_EQ(rangeOfString(T("a@b@c"), T("@")), (Range{1, 1}));
  EXPECT_EQ(rangeOfString(T("+4917012345@srv"), T("4917012345")), (Range{1, 10}));
  EXPECT_FALSE(containsByLocation(T("Alice"), T("alice")));
}

TEST(TextSearch, PositionsCountUtf16Units) {
  EXPECT_EQ(rangeOfString(kGrinning + u"@x", T("@")), (Range{2, 1}));
  // A needle that is half a surrogate pair matches that half.
  EXPECT_EQ(rangeOfString(u"x" + kGrinning, Text{0xDE00}), (Range{2, 1}));
}

TEST(TextSubstring, BoundsAndRangeException) {
  EXPECT_EQ(substringTo(T("abc"), 0), Text());
  EXPECT_EQ(substringTo(T("abc"), 3), T("abc"));
  EXPECT_THROW(substringTo(T("abc"), 4), RangeException);
  EXPECT_EQ(substringFrom(T("Alice: "), 7), Text());
  EXPECT_THROW(substringFrom(T("Alice:"), 7), RangeException);
  EXPECT_THROW(substringFrom(Text(), 1), std::out_of_range);
  EXPECT_EQ(substringFrom(kGrinning + u"x", 1), (Text{0xDE00, u'x'}));
}

TEST(TextTrim, BothEndsOnlyAndNeverLineBreaks) {
  EXPECT_EQ(trimWhiteSpace(u"\t\u00A0 a  b \u3000\u2009"), T("a  b"));
  EXPECT_EQ(trimWhiteSpace(T("\na\r\n")), T("\na\r\n"));
  EXPECT_EQ(trimWhiteSpace(T(" \n a ")), T("\n a"));
  EXPECT_EQ(trimWhiteSpace(u"\u200Ba\uFEFF"), u"\u200Ba\uFEFF");
  EXPECT_EQ(trimWhiteSpace(u" \t\u3000"), Text());
  EXPECT_EQ(trimWhiteSpace(Text()), Text());
}

TEST(TextReplace, LiteralLeftToRightNonOverlapping) {
  EXPECT_EQ(replaceOccurrences(T("aaa"), T("aa"), T("b")), T("ba"));
  EXPECT_EQ(replaceOccurrences(T("a-b-c"), T("-"), Text()), T("abc"));
  EXPECT_EQ(replaceOccurrences(T("a"), T("a"), T("aa")), T("aa"));  // no re-scan of output
  EXPECT_EQ(replaceOccurrences(T("abc"), Text(), T("x")), T("abc"));
  EXPECT_EQ(replaceOccurrences(T("ABC"), T("b"), T("x")), T("ABC"));
}

TEST(TextValues, BoolValue) {
  struct Case { Text in; bool out; };
  for (const Case& c : std::vector<Case>{
           {T("YES"), true}, {T(" +007"), true}, {T("-1"), true}, {T("0"), false},
           {T("00"), false}, {T("no"), false}, {Text(), false}, {T("true"), true},
           {T("0x1"), false}, {T("\n1"), false}, {u"\u3000y", true}, {T("\tT"), true},
           {T("+"), false}, {T("-0"), false}, {T("0009"), true}, {T("+-1"), false}}) {
    EXPECT_EQ(boolValue(c.in), c.out) << toUtf8(c.in);
  }
}

TEST(TextValues, IntValue) {
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
  struct Case { Text in; std::int32_t out; };
  for (const Case& c : std::vector<Case>{
           {T(" -12abc"), -12}, {T("99999999999"), kMax}, {T("-99999999999"), kMin},
           {T("2147483647"), kMax}, {T("2147483648"), kMax}, {T("-2147483648"), kMin},
           {T("-2147483647"), kMin + 1}, {T("+7"), 7}, {T("\t42"), 42}, {T("\n42"), 0},
           {T("1.9"), 1}, {T("- 5"), 0}, {T("abc"), 0}, {Text(), 0}}) {
    EXPECT_EQ(intValue(c.in), c.out) << toUtf8(c.in);
  }
}

TEST(TextValues, DoubleValue) {
  struct Case { Text in; double out; };
  for (const Case& c : std::vector<Case>{
           {T("1.5"), 1.5}, {T(" -2.5e2x"), -250.0}, {T("1E3"), 1000.0}, {T("1e"), 1.0},
           {T("2e+"), 2.0}, {T(".5"), 0.5}, {T("5."), 5.0}, {T("+.25"), 0.25}, {T("."), 0.0},
           {T("-"), 0.0}, {T("abc"), 0.0}, {u"\u00A03", 3.0}, {T("\n3"), 0.0},
           {T("1400000000.5"), 1400000000.5}, {T("1,5"), 1.0}}) {
    EXPECT_EQ(doubleValue(c.in), c.out) << toUtf8(c.in);
  }
}

TEST(TextPaths, JoinCollapsesSlashesAndDropsTrailingOne) {
  EXPECT_EQ(appendingPathComponent(T("/var/x"), T("/N/")), T("/var/x/N"));
  EXPECT_EQ(appendingPathComponent(T("/var/x"), T("/HSWL.db")), T("/var/x/HSWL.db"));
  EXPECT_EQ(appendingPathComponent(T("/var/x"), T("//")), T("/var/x"));
  EXPECT_EQ(appendingPathComponent(T("/var/x/"), T("y")), T("/var/x/y"));
  EXPECT_EQ(appendingPathComponent(T("/var/x/N"), T("/N-1.500000.png")),
            T("/var/x/N/N-1.500000.png"));
  EXPECT_EQ(appendingPathComponent(T("/"), Text()), T("/"));
  EXPECT_EQ(appendingPathComponent(T("/"), T("x")), T("/x"));
  EXPECT_EQ(appendingPathComponent(Text(), T("a//b/")), T("a/b"));
}

TEST(TextFormat, PercentFPrintsSixDecimals) {
  EXPECT_EQ(formatDouble(1400000000.5), T("1400000000.500000"));
  EXPECT_EQ(formatDouble(0.0), T("0.000000"));
  EXPECT_EQ(formatDouble(-0.0), T("-0.000000"));
  EXPECT_EQ(formatDouble(0.1234567), T("0.123457"));
  EXPECT_EQ(formatDouble(1e20), T("100000000000000000000.000000"));
  EXPECT_EQ(formatDouble(std::nan("")), T("nan"));
  EXPECT_EQ(formatDouble(-std::nan("")), T("nan"));
  EXPECT_EQ(formatDouble(HUGE_VAL), T("inf"));
  EXPECT_EQ(formatDouble(-HUGE_VAL), T("-inf"));
}

TEST(TextFormat, PercentAtFillsInOrder) {
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
