// isBulletinBlocked over bulletins of any shape: missing keys, values of the
// wrong type at every level, deep nesting. It must always answer, and may
// answer YES only for the messenger's bulletin with a blacklisted sender.
//
// Input format (all choices wrap around, a missing byte reads as 0):
//   byte 0: bits 0-1 the section identifier (messenger, other app, absent,
//           the messenger's in capitals); bit 2 ContactsOnly.
//   then one value, the context:
//     tag % 10: 0 nil | 1 boolean (1 byte) | 2 integer (8 bytes) |
//               3 real (8 bytes) | 4 date (8 bytes) | 5 bytes (length, data) |
//               6 string (length, UTF-16LE units) | 7 a well-known string (1 byte) |
//               8 array (count % 4, values) | 9 dictionary (count % 6, key/value pairs)
//     key: one byte; below 0xF0 a well-known key, else a string as for tag 6.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "fuzz/fuzz_check.h"
#include "host/bulletin.h"
#include "host/value.h"
#include "model/hushwall.h"
#include "startup/blacklist.h"
#include "startup/settings.h"
#include "testing/fake_env.h"

namespace {

using hushwall::host::OptText;
using hushwall::host::T;
using hushwall::host::Text;
using hushwall::host::Value;

constexpr char kBlacklisted[] = "4917012345";
// Deep enough for any shape the hooks look at, and far past it.
constexpr int kMaxDepth = 200;

const char* const kKeys[] = {"notificationType", "userInfo", "jid", "aps", "alert", "body", "u"};
const char* const kStrings[] = {
    "AppNotificationLocal", "AppNotificationRemote", "4917012345@s.whatsapp.net", "4917012345",
    "4930999@s.whatsapp.net", "Alice: hi", "", "appnotificationlocal",
};

class Reader {
 public:
  Reader(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  std::uint8_t byte() { return pos_ < size_ ? data_[pos_++] : 0; }
  std::uint64_t word() {
    std::uint64_t w = 0;
    for (int i = 0; i < 8; ++i) w |= std::uint64_t{byte()} << (8 * i);
    return w;
  }
  Text text() {
    Text t;
    for (int n = byte() % 32; n > 0; --n) t.push_back(static_cast<char16_t>(byte() | (byte() << 8)));
    return t;
  }
  bool exhausted() const { return pos_ >= size_; }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t pos_ = 0;
};

Value readValue(Reader& in, int depth) {
  if (depth > kMaxDepth || in.exhausted()) return Value();
  switch (in.byte() % 10) {
    case 1: return Value::boolean(in.byte() & 1);
    case 2: return Value::integer(static_cast<std::int64_t>(in.word()));
    case 3:
    case 4: {
      std::uint64_t bits = in.word();
      double d;
      std::memcpy(&d, &bits, sizeof d);
      return (bits & 1) ? Value::real(d) : Value::date(d);
    }
    case 5: {
      hushwall::host::Bytes bytes(in.byte() % 16);
      for (auto& b : bytes) b = in.byte();
      return Value::data(std::move(bytes));
    }
    case 6: return Value::string(in.text());
    case 7: {
      std::uint8_t pick = in.byte();
      return Value::string(T(kStrings[pick % std::size(kStrings)]),
                           (pick & 0x80) ? Value::StringClass::kSubclass : Value::StringClass::kBase);
    }
    case 8: {
      hushwall::host::Array items;
      for (int n = in.byte() % 4; n > 0; --n) items.push_back(readValue(in, depth + 1));
      return Value::array(std::move(items));
    }
    case 9: {
      hushwall::host::Dict entries;
      for (int n = in.byte() % 6; n > 0; --n) {
        std::uint8_t k = in.byte();
        Text key = k < 0xF0 ? T(kKeys[k % std::size(kKeys)]) : in.text();
        entries.insert_or_assign(key, readValue(in, depth + 1));
      }
      return Value::dictionary(std::move(entries));
    }
    default: return Value();
  }
}

class FuzzBulletin : public hushwall::host::Bulletin {
 public:
  FuzzBulletin(OptText sectionID, Value context)
      : sectionID_(std::move(sectionID)), context_(std::move(context)) {}
  OptText sectionID() const override { return sectionID_; }
  Value context() const override { return context_; }
  OptText message() const override { return T("Alice: hi"); }

 private:
  OptText sectionID_;
  Value context_;
};

// The sender's address where the bulletin's kind says it is, as a text;
// absent when it is missing or not a string.
OptText senderOf(const Value& context) {
  const Value type = context.objectForKey("notificationType");
  const Value userInfo = context.objectForKey("userInfo");
  if (type.text() == T("AppNotificationLocal")) return userInfo.objectForKey("jid").text();
  return userInfo.objectForKey("aps").objectForKey("u").text();
}

struct World {
  World() {
    hushwall::blacklistNumbers = new std::vector<Text>{T(kBlacklisted)};
    env.addressBook.contacts = {T("4930999")};
  }
  hushwall::testing::FakeEnv env;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static World* world = new World();  // one device for the whole run
  (void)world;
  Reader in(data, size);
  const std::uint8_t flags = in.byte();
  const OptText sections[] = {T("net.whatsapp.WhatsApp"), T("com.example.chat"), std::nullopt,
                              T("NET.WHATSAPP.WHATSAPP")};
  const OptText section = sections[flags & 3];
  const Value context = readValue(in, 1);
  hushwall::settings_ContactsOnly = (flags & 4) != 0;

  hushwall::Hushwall& model = *hushwall::Hushwall::sharedInstance();
  const bool blocked = model.isBulletinBlocked(FuzzBulletin(section, context));

  if (blocked) {
    HUSHWALL_FUZZ_CHECK((flags & 3) == 0, "only the messenger's bulletins are blocked");
    const OptText type = context.objectForKey("notificationType").text();
    HUSHWALL_FUZZ_CHECK(type == T("AppNotificationLocal") || type == T("AppNotificationRemote"),
                        "only the two notification kinds are blocked");
    // Without ContactsOnly the list alone decides: the sender holds the
    // entry, or is not a text at all (a message to nil matches every entry).
    const OptText sender = senderOf(context);
    if (!hushwall::settings_ContactsOnly && sender) {
      HUSHWALL_FUZZ_CHECK(sender->find(T(kBlacklisted)) != Text::npos,
                          "blocked without a blacklisted sender");
    }
  }
  // With nothing on the list and ContactsOnly off, nothing is blocked.
  hushwall::settings_ContactsOnly = false;
  hushwall::blacklistNumbers->clear();
  HUSHWALL_FUZZ_CHECK(!model.isBulletinBlocked(FuzzBulletin(section, context)),
                      "blocked with an empty blacklist");
  hushwall::blacklistNumbers->push_back(T(kBlacklisted));
  return 0;
}
