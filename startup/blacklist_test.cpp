// Reloading the in-memory blacklist from a real SQLite file.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "startup/blacklist.h"
#include "testing/database_rows.h"
#include "testing/fake_env.h"
#include "testing/process_state.h"

namespace hushwall {
namespace {

namespace fs = std::filesystem;
using host::T;

class ContactsChangedTest : public ::testing::Test {
 protected:
  std::vector<host::Text> reload() {
    ContactsChanged();
    return *blacklistNumbers;
  }

  testing::FreshProcessState state;
  testing::FakeEnv env;
};

TEST_F(ContactsChangedTest, ReadsThePhoneNumberColumnInRowOrder) {
  env.root.installDatabase();
  testing::FreshProcessState::setBlacklist({"stale"});
  EXPECT_TRUE(reload().empty());

  testing::execSql(env.root.databaseFile(),
                   "INSERT INTO Blacklist (name, phoneNumber) VALUES "
                   "('Ann', '4917012345'), ('nobody', NULL), ('Bob', '+49 170'), "
                   "(NULL, '4917012345'), ('Eve', '')");
  const std::vector<host::Text> expected = {T("4917012345"), T("+49 170"), T("4917012345"), T("")};
  EXPECT_EQ(reload(), expected);

  // A reload replaces the content of the very same list.
  const std::vector<host::Text>* held = blacklistNumbers;
  EXPECT_EQ(reload(), expected);
  EXPECT_EQ(blacklistNumbers, held);

  testing::execSql(env.root.databaseFile(), "DELETE FROM Blacklist WHERE name = 'Ann'");
  EXPECT_EQ(reload(), (std::vector<host::Text>{T("+49 170"), T("4917012345"), T("")}));
  EXPECT_EQ(blacklistNumbers, held);

  // Each row lands where a shorter or longer one stood before, and text past
  // plain ASCII is decoded there too.
  testing::execSql(env.root.databaseFile(),
                   "UPDATE Blacklist SET phoneNumber = '+49 170 \xC3\xBC 99' WHERE name = 'Bob';"
                   "UPDATE Blacklist SET phoneNumber = '1' WHERE name IS NULL");
  EXPECT_EQ(reload(), (std::vector<host::Text>{u"+49 170 \u00FC 99", T("1"), T("")}));
}

TEST_F(ContactsChangedTest, AnUnreadableDatabaseEmptiesTheList) {
  // No data directory: the open fails.
  testing::FreshProcessState::setBlacklist({"stale"});
  EXPECT_TRUE(reload().empty());

  // The folder but no file: the open makes an empty file, which has no table.
  fs::create_directories(fs::path(env.root.databaseFile()).parent_path());
  testing::FreshProcessState::setBlacklist({"stale"});
  EXPECT_TRUE(reload().empty());
  EXPECT_TRUE(fs::exists(env.root.databaseFile()));

  // A database without the Blacklist table.
  env.root.installDatabase();
  testing::execSql(env.root.databaseFile(), "DROP TABLE Blacklist");
  testing::FreshProcessState::setBlacklist({"stale"});
  EXPECT_TRUE(reload().empty());
}

}  // namespace
}  // namespace hushwall
