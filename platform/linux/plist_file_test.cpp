#include "platform/linux/plist_file.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

#include "platform/linux/plist_limits.h"
#include "testing/file_tree.h"
#include "testing/temp_device_root.h"

namespace hushwall::linux_platform {
namespace {

using host::T;
using host::Value;

void writeAll(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// A binary property list of nested arrays: object i holds `fanOut`
// references to object i + 1, the last one is empty.
std::string nestedBinaryArrays(int levels, int fanOut) {
  auto bigEndian = [](std::uint64_t v, int width) {
    std::string s(width, '\0');
    for (int i = width - 1; i >= 0; --i, v >>= 8) s[i] = static_cast<char>(v & 0xFF);
    return s;
  };
  std::string out = "bplist00", table;
  for (int i = 0; i <= levels; ++i) {
    table += bigEndian(out.size(), 4);
    int refs = i < levels ? fanOut : 0;
    out += static_cast<char>(0xA0 | refs);
    for (int r = 0; r < refs; ++r) out += bigEndian(i + 1, 4);
  }
  std::uint64_t tableAt = out.size();
  return out + table + std::string(6, '\0') + "\x04\x04" + bigEndian(levels + 1, 8) +
         bigEndian(0, 8) + bigEndian(tableAt, 8);
}

const char kXmlHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST "
    "1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n";

class PlistFileTest : public ::testing::Test {
 protected:
  std::string file(const std::string& name) const { return root.path() + "/" + name; }
  testing::TempDeviceRoot root;
};

TEST_F(PlistFileTest, BinaryAndXmlRoundTripASettingsDictionary) {
  host::Dict settings{
      {T("Enabled"), Value::boolean(true)}, {T("SaveHistory"), Value::boolean(false)},
      {T("Vibrate"), Value::string(T("YES"))}, {T("ActionButton"), Value::string(T("0"))},
      {T("Count"), Value::integer(42)}, {T("Negative"), Value::integer(-7)},
      {T("Largest"), Value::integer(std::numeric_limits<std::int64_t>::max())},
      {T("Smallest"), Value::integer(std::numeric_limits<std::int64_t>::min())},
      {T("PastDoublePrecision"), Value::integer((std::int64_t{1} << 53) + 1)},
      {T("Ratio"), Value::real(0.1)},
      {T("Nested"), Value::dictionary({{T("Name"), Value::string(T("Zoë 🙂"))}})},
      {T("List"), Value::array({Value::integer(1), Value::string(T("two")), Value::array({})})},
      {T("Bytes"), Value::data({0, 1, 0xFF})}, {T("NoBytes"), Value::data({})},
      {T("Since2001"), Value::date(1700000000.0)}, {T("Before2001"), Value::date(946684800.0)},
  };
  writeXmlPlist(file("s.xml.plist"), settings);
  EXPECT_EQ(testing::fileBytes(file("s.xml.plist")).rfind("<?xml", 0), 0u);
  EXPECT_EQ(readPlistDictionary(file("s.xml.plist")), settings);

  // The binary format also keeps fractions of a second, on both sides of 2001.
  settings[T("Since2001")] = Value::date(1700000000.25);
  settings[T("Before2001")] = Value::date(946684800.75);
  writeBinaryPlist(file("s.plist"), settings);
  EXPECT_EQ(testing::fileBytes(file("s.plist")).rfind("bplist00", 0), 0u);
  std::optional<host::Dict> back = readPlistDictionary(file("s.plist"));
  EXPECT_EQ(back, settings);
  ASSERT_TRUE(back);
  EXPECT_TRUE(back->at(T("Vibrate")).isMemberOfBaseStringClass());
}

TEST_F(PlistFileTest, ReadsAHandWrittenXmlPropertyList) {
  writeAll(file("hand.plist"), std::string(kXmlHead) + R"(<dict>
  <!-- what the settings pane writes -->
  <key>Enabled</key><true/>
  <key>DeleteMessages</key><false/>
  <key>Level</key><integer>-3</integer>
  <key>Scale</key><real>2.5</real>
  <key>Label</key><string>Tom &amp; Jerry</string>
  <key>When</key><date>2001-01-01T00:00:10Z</date>
  <key>Blob</key><data>AAEC/w==</data>
  <key>Numbers</key><array><string>+49 170</string><array/></array>
  <key>Inner</key><dict><key>Off</key><string>NO</string></dict>
</dict>
</plist>
)");
  EXPECT_EQ(readPlistDictionary(file("hand.plist")),
            (host::Dict{
                {T("Enabled"), Value::boolean(true)}, {T("DeleteMessages"), Value::boolean(false)},
                {T("Level"), Value::integer(-3)}, {T("Scale"), Value::real(2.5)},
                {T("Label"), Value::string(T("Tom & Jerry"))}, {T("When"), Value::date(978307210.0)},
                {T("Blob"), Value::data({0, 1, 2, 0xFF})},
                {T("Numbers"), Value::array({Value::string(T("+49 170")), Value::array({})})},
                {T("Inner"), Value::dictionary({{T("Off"), Value::string(T("NO"))}})}}));
}

TEST_F(PlistFileTest, HostileNestingAndSizesAreRefusedQuicklyAndWithoutCrashing) {
  auto nestedXml = [](int levels, bool closed) {
    std::string body;
    for (int i = 0; i < levels; ++i) body += "<array>";
    for (int i = 0; closed && i < levels; ++i) body += "</array>";
    return std::string(kXmlHead) + "<dict><key>k</key>" + body + (closed ? "</dict></plist>" : "");
  };
  // The guard must not refuse what libplist reads well: 100 levels of arrays.
  EXPECT_TRUE(plistSafeToParse(nestedBinaryArrays(100, 1)));
  writeAll(file("fine.plist"), nestedXml(100, true));
  EXPECT_TRUE(readPlistDictionary(file("fine.plist")));
  for (const auto& [name, bytes] : std::vector<std::pair<const char*, std::string>>{
           {"1000 levels", nestedXml(1000, true)},
           // Unclosed, this depth made libplist overflow the stack while giving up.
           {"300000 levels unclosed", nestedXml(300000, false)},
           {"a binary chain 200000 long", nestedBinaryArrays(200000, 1)},
           // 40 levels that each refer to the next twice: 2^40 nodes once expanded.
           {"a reference bomb", nestedBinaryArrays(40, 2)}}) {
    writeAll(file("hostile.plist"), bytes);
    auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(readPlistDictionary(file("hostile.plist"))) << name;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)) << name;
  }

  // Bounded in keys too: a file at the bound loads, one key more is damaged.
  host::Dict keys;
  for (std::size_t i = 0; i < kMaxPlistKeys; ++i) keys[T("Key" + std::to_string(i))] = Value::boolean(true);
  for (auto write : {writeBinaryPlist, writeXmlPlist}) {
    host::Dict more = keys;
    write(file("keys.plist"), keys);
    EXPECT_EQ(readPlistDictionary(file("keys.plist")), keys);
    more[T("OneMore")] = Value::boolean(true);
    write(file("keys.plist"), more);
    EXPECT_FALSE(readPlistDictionary(file("keys.plist")));
  }
}

TEST_F(PlistFileTest, WritingFailsLoudlyAndLeavesTheOldFile) {
  const host::Dict good{{T("Enabled"), Value::boolean(true)}};
  try {
    writeBinaryPlist(file("no/such/dir/s.plist"), good);
    ADD_FAILURE() << "no error for a missing directory";
  } catch (const std::runtime_error& e) {
    EXPECT_NE(std::string(e.what()).find("no/such/dir/s.plist"), std::string::npos) << e.what();
  }
  writeBinaryPlist(file("s.plist"), good);
  EXPECT_THROW(writeXmlPlist(file("s.plist"), {{T("Gone"), Value()}}), std::invalid_argument);
  EXPECT_THROW(writeBinaryPlist(file("s.plist"), {{T("Dates"), Value::array({Value::date(1e12)})}}),
               std::invalid_argument);
  EXPECT_EQ(readPlistDictionary(file("s.plist")), good);
  int entries = 0;
  for ([[maybe_unused]] const auto& e : std::filesystem::directory_iterator(root.path())) ++entries;
  EXPECT_EQ(entries, 1) << "a temporary file was left behind";
}

}  // namespace
}  // namespace hushwall::linux_platform
