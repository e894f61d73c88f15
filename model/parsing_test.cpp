#include <gtest/gtest.h>

#include "host/bulletin.h"
#include "model/hushwall.h"
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

struct TestBulletin : host::Bulletin {
  OptText section = T("net.whatsapp.WhatsApp");
  Value contextValue;
  OptText sectionID() const override { return section; }
  Value context() const override { return contextValue; }
  OptText message() const override { return std::nullopt; }
};

Value str(const char* s) { return Value::string(T(s)); }
Value dict(Dict entries) { return Value::dictionary(std::move(entries)); }

TestBulletin localBulletin(const char* jid) {
  TestBulletin b;
  b.contextValue = dict({{T("notificationType"), str("AppNotificationLocal")},
                         {T("userInfo"), dict({{T("jid"), str(jid)}})}});
  return b;
}

// aps entries are given whole, so a test can leave any of them out.
TestBulletin remoteBulletin(Dict aps) {
  TestBulletin b;
  b.contextValue = dict({{T("notificationType"), str("AppNotificationRemote")},
                         {T("userInfo"), dict({{T("aps"), dict(std::move(aps))}})}});
  return b;
}

Dict fullAps(const char* u) {
  return {{T("alert"), dict({{T("body"), str("Alice: Hi")}})}, {T("u"), str(u)}};
}

class ParsingTest : public ::testing::Test {
 protected:
  Hushwall& model = *Hushwall::sharedInstance();
  testing::FakeEnv env;
  FreshProcessState state;
};

struct Case {
  const char* input;
  const char* expected;
};

TEST_F(ParsingTest, GetPhoneNumberCutsAtTheFirstAtSign) {
  const Case cases[] = {
      {"4917012345@srv", "4917012345"},
      {" 4917012345 @srv", "4917012345"},
      {"4917012345-1400000000@grp", "4917012345-1400000000"},
      {" 4917012345 ", " 4917012345 "},  // no "@": untouched
      {"@srv", ""},
      {"49170@a@b", "49170"},
      {"\t49170\u3000@srv", "49170"},
      {"\n49170@srv", "\n49170"},  // line breaks are not white space
  };
  for (const Case& c : cases) {
    EXPECT_EQ(model.getPhoneNumber(T(c.input)), OptText(T(c.expected))) << c.input;
  }
  EXPECT_EQ(model.getPhoneNumber(std::nullopt), std::nullopt);
}

TEST_F(ParsingTest, GetMessageSkipsOneCharacterAfterTheFirstColon) {
  const Case cases[] = {
      {"Alice: See you at 5", "See you at 5"},
      {"Alice @ Team: Hi: all", "Hi: all"},
      {"Alice:Hello", "ello"},
      {"Alice: ", ""},  // colon second to last
      {"A:B", ""},
      {"Photo", "Photo"},
      {" Photo ", " Photo "},  // no colon: untouched
      {"Bob:  \tHi there\t ", "Hi there"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(model.getMessage(T(c.input)), OptText(T(c.expected))) << c.input;
  }
  EXPECT_EQ(model.getMessage(std::nullopt), std::nullopt);

  // The skipped character is one UTF-16 unit: half of a surrogate pair.
  Text emoji = T("\U0001F600");
  ASSERT_EQ(emoji.size(), 2u);
  Text withPair = T("Bob:") + emoji + T("ok");
  EXPECT_EQ(model.getMessage(withPair), OptText(emoji.substr(1) + T("ok")));
}

TEST_F(ParsingTest, GetMessageRaisesWhenTheFirstColonIsLast) {
  EXPECT_THROW(model.getMessage(T("Alice:")), host::RangeException);
  EXPECT_THROW(model.getMessage(T(":")), host::RangeException);
  // Only the first colon counts.
  EXPECT_EQ(model.getMessage(T("a: b:")), OptText(T("b:")));
}

TEST_F(ParsingTest, GetNamePrefersTheColonThenTheBlank) {
  const Case cases[] = {
      {"Alice: See you", "Alice"},
      {" Bob : hi", "Bob"},
      {"Alice sent you a photo", "Alice"},
      {"Photo", ""},
      {"Alice Smith: Hi", "Alice Smith"},
      {"Alice\tsent", ""},  // only U+0020 splits
      {"Alice\u00A0sent", ""},
      {" Alice", ""},  // the blank at 0 leaves nothing before it
      {":hi", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(model.getName(T(c.input)), T(c.expected)) << c.input;
  }
  EXPECT_EQ(model.getName(std::nullopt), T(""));
}

TEST_F(ParsingTest, BulletinTable) {
  FreshProcessState::setBlacklist({"4917012345"});

  EXPECT_TRUE(model.isBulletinBlocked(localBulletin("4917012345@srv")));
  EXPECT_FALSE(model.isBulletinBlocked(localBulletin("4930999@srv")));

  TestBulletin otherApp = localBulletin("4917012345@srv");
  otherApp.section = T("com.apple.MobileSMS");
  EXPECT_FALSE(model.isBulletinBlocked(otherApp));
  otherApp.section = T("NET.WHATSAPP.WHATSAPP");  // compared exactly
  EXPECT_FALSE(model.isBulletinBlocked(otherApp));
  otherApp.section = std::nullopt;
  EXPECT_FALSE(model.isBulletinBlocked(otherApp));

  // The remote "u" goes whole to the containment test.
  EXPECT_TRUE(model.isBulletinBlocked(remoteBulletin(fullAps("4917012345@srv"))));
  EXPECT_FALSE(model.isBulletinBlocked(remoteBulletin(fullAps("4930999@srv"))));

  Dict noBody = fullAps("4917012345@srv");
  noBody[T("alert")] = dict({{T("title"), str("Alice")}});
  EXPECT_FALSE(model.isBulletinBlocked(remoteBulletin(noBody)));
  Dict noAlert = fullAps("4917012345@srv");
  noAlert.erase(T("alert"));
  EXPECT_FALSE(model.isBulletinBlocked(remoteBulletin(noAlert)));
  Dict noU = fullAps("4917012345@srv");
  noU.erase(T("u"));
  EXPECT_FALSE(model.isBulletinBlocked(remoteBulletin(noU)));
}

TEST_F(ParsingTest, BulletinWithMissingPartsIsNotBlocked) {
  // Any number that got as far as the blacklist test would be blocked (on the
  // list, or unknown to the address book), so NO can only come from the
  // missing part.
  settings_ContactsOnly = true;
  FreshProcessState::setBlacklist({"4917012345"});

  TestBulletin noType = localBulletin("4917012345@srv");
  noType.contextValue = dict({{T("userInfo"), dict({{T("jid"), str("4917012345@srv")}})}});
  EXPECT_FALSE(model.isBulletinBlocked(noType));

  TestBulletin otherType = localBulletin("4917012345@srv");
  otherType.contextValue =
      dict({{T("notificationType"), str("AppNotificationCalendar")},
            {T("userInfo"), dict({{T("jid"), str("4917012345@srv")},
                                  {T("aps"), dict(fullAps("4917012345@srv"))}})}});
  EXPECT_FALSE(model.isBulletinBlocked(otherType));

  TestBulletin noUserInfo;
  noUserInfo.contextValue = dict({{T("notificationType"), str("AppNotificationLocal")}});
  EXPECT_FALSE(model.isBulletinBlocked(noUserInfo));

  TestBulletin noJid;
  noJid.contextValue = dict({{T("notificationType"), str("AppNotificationLocal")},
                             {T("userInfo"), dict({{T("aps"), dict(fullAps("4917012345"))}})}});
  EXPECT_FALSE(model.isBulletinBlocked(noJid));

  TestBulletin noAps;
  noAps.contextValue = dict({{T("notificationType"), str("AppNotificationRemote")},
                             {T("userInfo"), dict({{T("jid"), str("4917012345@srv")}})}});
  EXPECT_FALSE(model.isBulletinBlocked(noAps));

  TestBulletin nilContext;
  EXPECT_FALSE(model.isBulletinBlocked(nilContext));
}

TEST_F(ParsingTest, ContactsOnlyBlocksBulletinsFromUnknownSenders) {
  settings_ContactsOnly = true;
  env.addressBook.contacts = {T("4930999")};

  EXPECT_TRUE(model.isBulletinBlocked(localBulletin("4955555@srv")));
  // The local jid is cut to the number before the address book sees it ...
  EXPECT_FALSE(model.isBulletinBlocked(localBulletin("4930999@srv")));
  // ... while the remote "u" is passed as it stands.
  EXPECT_TRUE(model.isBulletinBlocked(remoteBulletin(fullAps("4930999@srv"))));
  EXPECT_FALSE(model.isBulletinBlocked(remoteBulletin(fullAps("4930999"))));
  EXPECT_EQ(env.addressBook.lookups,
            (std::vector<OptText>{T("4955555"), T("4930999"), T("4930999@srv"), T("4930999")}));
}

}  // namespace
}  // namespace hushwall
