#include <gtest/gtest.h>

#include "model/hushwall.h"
#include "startup/blacklist.h"
#include "startup/settings.h"
#include "testing/fake_env.h"
#include "testing/process_state.h"

namespace hushwall {
namespace {

using host::OptText;
using host::T;
using testing::FreshProcessState;

class BlacklistTest : public ::testing::Test {
 protected:
  bool blacklisted(const OptText& number) {
    return Hushwall::sharedInstance()->phoneNumberBlacklisted(number);
  }
  bool exists(const OptText& number) {
    return Hushwall::sharedInstance()->existPhoneNumber(number);
  }

  testing::FakeEnv env;
  FreshProcessState state;
};

TEST_F(BlacklistTest, SharedInstanceIsMadeOnceAndKept) {
  Hushwall* first = Hushwall::sharedInstance();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(Hushwall::sharedInstance(), first);
}

TEST_F(BlacklistTest, EntryIsSearchedForInsideTheNumber) {
  FreshProcessState::setBlacklist({"4917012345"});
  for (const char* number : {"4917012345", "+4917012345", "4917012345@srv"}) {
    EXPECT_TRUE(exists(T(number))) << number;
    EXPECT_TRUE(blacklisted(T(number))) << number;
  }
  // The number inside the entry is not enough.
  EXPECT_FALSE(exists(T("49170")));
  EXPECT_FALSE(blacklisted(T("4930999")));

  // A short entry covers every number that holds it anywhere.
  FreshProcessState::setBlacklist({"999", "12"});
  EXPECT_TRUE(exists(T("4930012")));
  EXPECT_TRUE(exists(T("1200000")));
  EXPECT_FALSE(exists(T("1020")));

  // Neither side is normalised.
  FreshProcessState::setBlacklist({"+49 170 12345"});
  for (const char* number : {"4917012345", "+4917012345", "4917012345@srv"}) {
    EXPECT_FALSE(exists(T(number))) << number;
  }
}

TEST_F(BlacklistTest, EmptyEntryMatchesNothing) {
  FreshProcessState::setBlacklist({""});
  EXPECT_FALSE(exists(T("4917012345")));
  EXPECT_FALSE(exists(T("")));
  EXPECT_FALSE(blacklisted(T("4917012345")));
  // A later entry is still reached.
  FreshProcessState::setBlacklist({"", "12345"});
  EXPECT_TRUE(exists(T("4917012345")));
}

TEST_F(BlacklistTest, EmptyOrMissingListWithoutContactsOnlyBlocksNothing) {
  EXPECT_FALSE(blacklisted(T("4917012345")));
  EXPECT_FALSE(blacklisted(std::nullopt));
  EXPECT_FALSE(exists(std::nullopt));

  // Before the first reload the list does not exist at all.
  std::vector<host::Text>* loaded = blacklistNumbers;
  blacklistNumbers = nullptr;
  EXPECT_FALSE(exists(T("4917012345")));
  EXPECT_FALSE(blacklisted(T("4917012345")));
  blacklistNumbers = loaded;
  EXPECT_TRUE(env.addressBook.lookups.empty());
}

TEST_F(BlacklistTest, ContactsOnlyBlocksStrangersAndTheListStillWins) {
  settings_ContactsOnly = true;
  env.addressBook.contacts = {T("4917012345"), T("4930999")};

  // Empty list: strangers are blocked, contacts are not.
  EXPECT_TRUE(blacklisted(T("4955555")));
  EXPECT_FALSE(blacklisted(T("4917012345")));
  // The address book is asked afresh, every time, with the number as given.
  ASSERT_EQ(env.addressBook.lookups.size(), 2u);
  EXPECT_EQ(env.addressBook.lookups[1], OptText(T("4917012345")));
  // existPhoneNumber never looks at the contacts.
  EXPECT_FALSE(exists(T("4955555")));
  EXPECT_EQ(env.addressBook.lookups.size(), 2u);

  // A contact on the list is blocked, decided before the address book is asked.
  FreshProcessState::setBlacklist({"4930999"});
  env.addressBook.lookups.clear();
  EXPECT_TRUE(blacklisted(T("4930999")));
  EXPECT_TRUE(env.addressBook.lookups.empty());
  // A contact not on the list still passes.
  EXPECT_FALSE(blacklisted(T("4917012345")));
  EXPECT_EQ(env.addressBook.lookups.size(), 1u);
}

TEST_F(BlacklistTest, AbsentNumberCountsAsContainingEveryEntry) {
  FreshProcessState::setBlacklist({"4917012345"});
  EXPECT_TRUE(exists(std::nullopt));
  EXPECT_TRUE(blacklisted(std::nullopt));

  // With an empty list, contacts-only mode answers by the address book, where
  // an absent number matches no one.
  FreshProcessState::setBlacklist({});
  settings_ContactsOnly = true;
  EXPECT_TRUE(blacklisted(std::nullopt));
  ASSERT_EQ(env.addressBook.lookups.size(), 1u);
  EXPECT_FALSE(env.addressBook.lookups[0].has_value());
}

TEST_F(BlacklistTest, UnformattedPhoneNumberStripsOnlyTheEightCharacters) {
  Hushwall* model = Hushwall::sharedInstance();
  EXPECT_EQ(model->unformattedPhoneNumber(T("+49 (170) 123-45.67/8")), OptText(T("4917012345678")));
  EXPECT_EQ(model->unformattedPhoneNumber(T("49\u00A0170\u00A012345")), OptText(T("4917012345")));
  EXPECT_EQ(model->unformattedPhoneNumber(T("user@srv:1")), OptText(T("user@srv:1")));
  EXPECT_EQ(model->unformattedPhoneNumber(T("()-+./\u00A0 ")), OptText(T("")));
  // Other white space is left alone.
  EXPECT_EQ(model->unformattedPhoneNumber(T("\t49\u2007170\n")), OptText(T("\t49\u2007170\n")));
  EXPECT_EQ(model->unformattedPhoneNumber(std::nullopt), std::nullopt);
}

TEST_F(BlacklistTest, StatusBarIconIsAskedForEveryTimeAndNothingIsPosted) {
  Hushwall* model = Hushwall::sharedInstance();
  model->removeStatusBarIcon();
  model->addStatusBarIcon();
  model->addStatusBarIcon();
  EXPECT_EQ(env.statusBar.calls,
            (std::vector<std::string>{"remove:HSWL", "add:HSWL", "add:HSWL"}));
  model->removeStatusBarIcon();
  EXPECT_TRUE(env.statusBar.shown.empty());
  EXPECT_TRUE(env.notifyCenter.posted.empty());
}

}  // namespace
}  // namespace hushwall
