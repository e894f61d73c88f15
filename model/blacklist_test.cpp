// The model's blacklist decisions and its parsing of JIDs, banner texts and
// bulletins, on the in-memory blacklist and a recorded address book.
#include <gtest/gtest.h>

#include "host/bulletin.h"
#include "model/hushwall.h"
#include "startup/blacklist.h"
#include "startup/settings.h"
#include "testing/fake_env.h"
#include "testing/process_state.h"

namespace hushwall {
namespace {

using host::Dict;
using host::OptText;
using host::T;
using host::Text;
using host::Value;
using testing::FreshProcessState;

class BlacklistTest : public ::testing::Test {
 protected:
  // The list as the reload leaves it: an entry per row, in row order.
  static void setList(const std::vector<const char*>& entries) {
    FreshProcessState::setBlacklist({});
    for (const char* e : entries) blacklistNumbers->push_back(T(e));
  }
  static OptText opt(const char* s) { return s ? OptText(T(s)) : std::nullopt; }
  Hushwall& model = *Hushwall::sharedInstance();
  testing::FakeEnv env;
  FreshProcessState state;
};
using ParsingTest = BlacklistTest;

TEST_F(BlacklistTest, EntryIsSearchedForInsideTheNumberAsWritten) {
  // Without contacts-only mode, a number is blocked exactly when it holds an
  // entry; an absent number counts as holding every entry of a non-empty list.
  const struct { std::vector<const char*> list; const char* number; bool listed; } cases[] = {
      {{"4917012345"}, "4917012345", true}, {{"4917012345"}, "+4917012345", true},
      {{"4917012345"}, "4917012345@srv", true}, {{"4917012345"}, nullptr, true},
      {{"4917012345"}, "49170", false},  // the number inside the entry is not enough
      {{"4917012345"}, "4930999", false},
      {{"999", "12"}, "4930012", true}, {{"999", "12"}, "1200000", true}, {{"999", "12"}, "1020", false},
      // Neither side is normalised.
      {{"+49 170 12345"}, "4917012345", false}, {{"+49 170 12345"}, "+4917012345", false},
      {{"+49 170 12345"}, "4917012345@srv", false},
      // An empty entry matches nothing, and a later entry is still reached.
      {{""}, "4917012345", false}, {{""}, "", false}, {{"", "12345"}, "4917012345", true},
      {{}, "4917012345", false}, {{}, nullptr, false}};
  for (const auto& c : cases) {
    setList(c.list);
    SCOPED_TRACE(c.number ? c.number : "(absent)");
    EXPECT_EQ(model.existPhoneNumber(opt(c.number)), c.listed);
    EXPECT_EQ(model.phoneNumberBlacklisted(opt(c.number)), c.listed);
  }
  // Before the first reload the list does not exist at all.
  std::vector<Text>* loaded = blacklistNumbers;
  blacklistNumbers = nullptr;
  EXPECT_FALSE(model.existPhoneNumber(T("4917012345")));
  EXPECT_FALSE(model.phoneNumberBlacklisted(T("4917012345")));
  blacklistNumbers = loaded;
  EXPECT_TRUE(env.addressBook.lookups.empty());
}

TEST_F(BlacklistTest, ContactsOnlyBlocksStrangersAndTheListStillWins) {
  settings_ContactsOnly = true;
  env.addressBook.contacts = {T("4917012345"), T("4930999")};
  // Empty list: strangers are blocked, contacts are not, and an absent
  // number matches no contact.
  EXPECT_TRUE(model.phoneNumberBlacklisted(T("4955555")));
  EXPECT_FALSE(model.phoneNumberBlacklisted(T("4917012345")));
  EXPECT_TRUE(model.phoneNumberBlacklisted(std::nullopt));
  // The address book is asked afresh, every time, with the number as given.
  EXPECT_EQ(env.addressBook.lookups, (std::vector<OptText>{T("4955555"), T("4917012345"), std::nullopt}));
  // existPhoneNumber never looks at the contacts.
  EXPECT_FALSE(model.existPhoneNumber(T("4955555")));
  EXPECT_EQ(env.addressBook.lookups.size(), 3u);

  // A contact on the list is blocked, decided before the address book is asked.
  setList({"4930999"});
  env.addressBook.lookups.clear();
  EXPECT_TRUE(model.phoneNumberBlacklisted(T("4930999")));
  EXPECT_TRUE(env.addressBook.lookups.empty());
  // A contact not on the list still passes.
  EXPECT_FALSE(model.phoneNumberBlacklisted(T("4917012345")));
  EXPECT_EQ(env.addressBook.lookups.size(), 1u);
}

TEST_F(BlacklistTest, UnformattedPhoneNumberStripsOnlyTheEightCharacters) {
  const std::pair<const char*, const char*> cases[] = {
      {"+49 (170) 123-45.67/8", "4917012345678"}, {"49\u00A0170\u00A012345", "4917012345"},
      {"user@srv:1", "user@srv:1"}, {"()-+./\u00A0 ", ""},
      {"\t49\u2007170\n", "\t49\u2007170\n"}};  // other white space is left alone
  for (const auto& [in, out] : cases) EXPECT_EQ(model.unformattedPhoneNumber(T(in)), OptText(T(out))) << in;
  EXPECT_EQ(model.unformattedPhoneNumber(std::nullopt), std::nullopt);
}

TEST_F(BlacklistTest, SharedInstanceIsKeptAndAsksForTheStatusBarIconEveryTime) {
  Hushwall* first = Hushwall::sharedInstance();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(Hushwall::sharedInstance(), first) << "made once and kept";
  model.removeStatusBarIcon();
  model.addStatusBarIcon();
  model.addStatusBarIcon();
  EXPECT_EQ(env.statusBar.calls, (std::vector<std::string>{"remove:HSWL", "add:HSWL", "add:HSWL"}));
  model.removeStatusBarIcon();
  EXPECT_TRUE(env.statusBar.shown.empty());
  EXPECT_TRUE(env.notifyCenter.posted.empty());
}

TEST_F(ParsingTest, JidsAndBannerTextsAreCutAtTheirMarks) {
  // 'p': getPhoneNumber cuts at the first "@" and trims; 'm': getMessage
  // skips one unit after the first colon and trims; 'n': getName takes what
  // is before the colon, else before the first U+0020. Only tab and category
  // Zs are white space, never line breaks.
  const std::tuple<char, const char*, const char*> cases[] = {
      {'p', "4917012345@srv", "4917012345"}, {'p', " 4917012345 @srv", "4917012345"},
      {'p', "4917012345-1400000000@grp", "4917012345-1400000000"}, {'p', " 4917012345 ", " 4917012345 "},
      {'p', "@srv", ""}, {'p', "49170@a@b", "49170"}, {'p', "\t49170\u3000@srv", "49170"},
      {'p', "\n49170@srv", "\n49170"},
      {'m', "Alice: See you at 5", "See you at 5"}, {'m', "Alice @ Team: Hi: all", "Hi: all"},
      {'m', "Alice:Hello", "ello"}, {'m', "Alice: ", ""}, {'m', "A:B", ""}, {'m', "Photo", "Photo"},
      {'m', " Photo ", " Photo "}, {'m', "Bob:  \tHi there\t ", "Hi there"}, {'m', "a: b:", "b:"},
      {'n', "Alice: See you", "Alice"}, {'n', " Bob : hi", "Bob"}, {'n', "Alice sent you a photo", "Alice"},
      {'n', "Photo", ""}, {'n', "Alice Smith: Hi", "Alice Smith"}, {'n', "Alice\tsent", ""},
      {'n', "Alice\u00A0sent", ""}, {'n', " Alice", ""}, {'n', ":hi", ""}};
  for (const auto& [f, in, out] : cases) {
    const OptText got = f == 'p' ? model.getPhoneNumber(T(in))
                                 : f == 'm' ? model.getMessage(T(in)) : OptText(model.getName(T(in)));
    EXPECT_EQ(got, OptText(T(out))) << f << ' ' << in;
  }
  EXPECT_EQ(model.getPhoneNumber(std::nullopt), std::nullopt);
  EXPECT_EQ(model.getMessage(std::nullopt), std::nullopt);
  EXPECT_EQ(model.getName(std::nullopt), T(""));
  // A colon at the very end leaves nothing to skip.
  EXPECT_THROW(model.getMessage(T("Alice:")), host::RangeException);
  EXPECT_THROW(model.getMessage(T(":")), host::RangeException);
  // The skipped character is one UTF-16 unit: half of a surrogate pair.
  const Text emoji = T("\U0001F600");
  EXPECT_EQ(model.getMessage(T("Bob:") + emoji + T("ok")), OptText(emoji.substr(1) + T("ok")));
}

struct TestBulletin : host::Bulletin {
  TestBulletin(Value context, OptText section = T("net.whatsapp.WhatsApp"))
      : contextValue(std::move(context)), section(std::move(section)) {}
  OptText sectionID() const override { return section; }
  Value context() const override { return contextValue; }
  OptText message() const override { return std::nullopt; }
  Value contextValue;
  OptText section;
};

Value str(const char* s) { return Value::string(T(s)); }
Value dict(Dict entries) { return Value::dictionary(std::move(entries)); }
Value context(const char* type, Dict userInfo) {
  return dict({{T("notificationType"), str(type)}, {T("userInfo"), dict(std::move(userInfo))}});
}
Value local(const char* jid) { return context("AppNotificationLocal", {{T("jid"), str(jid)}}); }
Dict fullAps(const char* u) { return {{T("alert"), dict({{T("body"), str("Alice: Hi")}})}, {T("u"), str(u)}}; }
Value remote(Dict aps) { return context("AppNotificationRemote", {{T("aps"), dict(std::move(aps))}}); }

TEST_F(ParsingTest, BulletinsAreJudgedByTheirSenderOnlyWhenWhole) {
  setList({"4917012345"});
  env.addressBook.contacts = {T("4930999")};
  const char* kJid = "4917012345@srv";
  const struct { const char* what; bool contactsOnly; TestBulletin bulletin; bool blocked; } cases[] = {
      {"local, listed", false, {local(kJid)}, true},
      {"local, not listed", false, {local("4930999@srv")}, false},
      {"another app", false, {local(kJid), T("com.apple.MobileSMS")}, false},
      {"section compared exactly", false, {local(kJid), T("NET.WHATSAPP.WHATSAPP")}, false},
      {"no section", false, {local(kJid), std::nullopt}, false},
      // The remote "u" goes whole to the containment test.
      {"remote, listed", false, {remote(fullAps(kJid))}, true},
      {"remote, not listed", false, {remote(fullAps("4930999@srv"))}, false},
      {"remote without body", false,
       {remote({{T("alert"), dict({{T("title"), str("Alice")}})}, {T("u"), str(kJid)}})}, false},
      {"remote without alert", false, {remote({{T("u"), str(kJid)}})}, false},
      {"remote without u", false, {remote({{T("alert"), dict({{T("body"), str("Alice: Hi")}})}})}, false},
      // In contacts-only mode any number that got as far as the blacklist
      // test would be blocked, so NO can only come from the missing part.
      {"no type", true, {dict({{T("userInfo"), dict({{T("jid"), str(kJid)}})}})}, false},
      {"another type", true,
       {context("AppNotificationCalendar", {{T("jid"), str(kJid)}, {T("aps"), dict(fullAps(kJid))}})}, false},
      {"no userInfo", true, {dict({{T("notificationType"), str("AppNotificationLocal")}})}, false},
      {"local without jid", true, {context("AppNotificationLocal", {{T("aps"), dict(fullAps(kJid))}})}, false},
      {"remote without aps", true, {context("AppNotificationRemote", {{T("jid"), str(kJid)}})}, false},
      {"nil context", true, {Value()}, false},
      // The local jid is cut to the number before the address book sees it,
      // while the remote "u" is passed as it stands.
      {"local stranger", true, {local("4955555@srv")}, true},
      {"local contact", true, {local("4930999@srv")}, false},
      {"remote contact with server", true, {remote(fullAps("4930999@srv"))}, true},
      {"remote contact", true, {remote(fullAps("4930999"))}, false}};
  for (const auto& c : cases) {
    settings_ContactsOnly = c.contactsOnly;
    EXPECT_EQ(model.isBulletinBlocked(c.bulletin), c.blocked) << c.what;
  }
  EXPECT_EQ(env.addressBook.lookups,
            (std::vector<OptText>{T("4955555"), T("4930999"), T("4930999@srv"), T("4930999")}));
}

}  // namespace
}  // namespace hushwall
