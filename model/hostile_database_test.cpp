// The database file damaged, replaced or taken away under the model. Every
// operation must return quietly with its answer for "nothing" (an empty
// blacklist, no duplicate, a lost write that is still announced), leave
// whatever is at the database's place as it found it, and work again as soon
// as a sound file is back.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>

#include "model/hushwall.h"
#include "startup/blacklist.h"
#include "startup/notification_names.h"
#include "testing/child_process.h"
#include "testing/database_rows.h"
#include "testing/fake_env.h"
#include "testing/process_state.h"

namespace hushwall {
namespace {

namespace fs = std::filesystem;
using host::T;
using host::Value;

constexpr double kStoredDate = 1400000000.0;
constexpr double kNow = kStoredDate + 10;  // within the duplicate window of the stored row

std::string contentsOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class HostileDatabaseTest : public ::testing::Test {
 protected:
  std::string file() const { return env.root.databaseFile(); }
  std::string folder() const { return fs::path(file()).parent_path(); }

  // A sound database: one blacklisted number and one history row, spread
  // over enough pages that a cut-off file is missing some of them.
  void installGoodDatabase() {
    fs::remove_all(file());
    env.root.installDatabase();
    testing::execSql(file(),
                     "INSERT INTO Blacklist (name, phoneNumber) VALUES ('Ann', '4917012345');"
                     "INSERT INTO History (phoneNumber, message, date) VALUES "
                     "('4917012345', 'hello', 1400000000.0);"
                     "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200) "
                     "INSERT INTO History (phoneNumber, message, date) "
                     "SELECT '4930999', printf('filler %d %s', i, hex(randomblob(40))), i FROM n;");
  }

  std::size_t historyRows() const { return testing::readHistoryRows(file()).size(); }

  // Every operation of the model and the blacklist reload, on whatever is at
  // the database's place; none may throw.
  struct Answers {
    std::vector<host::Text> blacklist;
    bool duplicate;
    std::size_t announcements;
  };
  Answers runEveryOperation() {
    Hushwall& model = *Hushwall::sharedInstance();
    env.notifyCenter.posted.clear();
    ContactsChanged();
    Answers answers{*blacklistNumbers, model.existMessage(T("hello"), T("4917012345"), kNow), 0};
    model.addHistoryWithPhoneNumber(T("4917012345"), T("Ann"), T("single"), kNow,
                                    kBLOCK_TYPE_NOTIFICATION, false);
    model.addHistoryWithArray(
        {Value::dictionary({{T("phoneNumber"), Value::string(T("4917012345"))},
                            {T("message"), Value::string(T("batched"))}})});
    answers.announcements = env.notifyCenter.posted.size();
    return answers;
  }

  // After the damage is repaired the same operations see and store rows.
  void expectSoundAgain(const std::string& fault) {
    installGoodDatabase();
    const std::size_t before = historyRows();
    Answers answers = runEveryOperation();
    EXPECT_EQ(answers.blacklist, std::vector<host::Text>{T("4917012345")}) << fault;
    EXPECT_TRUE(answers.duplicate) << fault;
    EXPECT_EQ(historyRows(), before + 2) << fault;
  }

  testing::FakeEnv env;
  testing::FreshProcessState state;
};

TEST_F(HostileDatabaseTest, DamagedOrMissingFilesReadAsNothingAndLoseWritesQuietly) {
  std::mt19937 random(7);
  // Each fault puts something unusable where the database belongs.
  const std::vector<std::pair<const char*, std::function<void()>>> faults = {
      {"cut inside the header", [&] { fs::resize_file(file(), 60); }},
      {"cut after the first page", [&] { fs::resize_file(file(), 4096); }},
      {"cut in the middle", [&] { fs::resize_file(file(), fs::file_size(file()) / 2); }},
      {"random bytes",
       [&] {
         std::string bytes(16384, '\0');
         for (char& c : bytes) c = static_cast<char>(random());
         std::ofstream(file(), std::ios::binary | std::ios::trunc) << bytes;
       }},
      {"an SQLite file without the tables",
       [&] {
         fs::remove(file());
         testing::execSql(file(), "CREATE TABLE Other (x)");
       }},
      {"tables of another shape",
       [&] {
         fs::remove(file());
         testing::execSql(file(), "CREATE TABLE Blacklist (number); CREATE TABLE History (x)");
       }},
      {"a directory in its place",
       [&] {
         fs::remove(file());
         fs::create_directory(file());
       }},
      {"no data directory", [&] { fs::remove_all(folder()); }},
  };

  for (const auto& [fault, damage] : faults) {
    installGoodDatabase();
    damage();
    const bool wasFile = fs::is_regular_file(file());
    const std::string bytesBefore = wasFile ? contentsOf(file()) : "";

    Answers answers = runEveryOperation();
    EXPECT_TRUE(answers.blacklist.empty()) << fault;
    EXPECT_FALSE(answers.duplicate) << fault;
    // Lost, but announced all the same: one post per writer call.
    EXPECT_EQ(answers.announcements, 2u) << fault;
    // Nothing was repaired, created or overwritten behind the user's back.
    if (wasFile) {
      EXPECT_EQ(contentsOf(file()), bytesBefore) << fault;
    }
    if (std::string(fault) == "a directory in its place") {
      EXPECT_TRUE(fs::is_directory(file()));
      EXPECT_TRUE(fs::is_empty(file()));
    }
    if (std::string(fault) == "no data directory") {
      EXPECT_FALSE(fs::exists(folder()));
    }

    expectSoundAgain(fault);
  }
  std::printf("hushwall-figure: hostile database: %zu damaged or missing files survived\n",
              faults.size());
}

TEST_F(HostileDatabaseTest, AFileLockedByAnotherWriterLosesWritesUntilItIsReleased) {
  installGoodDatabase();
  const std::size_t before = historyRows();
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(file().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);

  Answers answers = runEveryOperation();
  EXPECT_TRUE(answers.blacklist.empty());  // a reload that fails leaves the list empty, not stale
  EXPECT_FALSE(answers.duplicate);
  EXPECT_EQ(answers.announcements, 2u);

  ASSERT_EQ(sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(other);
  EXPECT_EQ(historyRows(), before);  // no write slipped in late
  expectSoundAgain("locked");
}

TEST_F(HostileDatabaseTest, AReadOnlyFileIsStillReadButTakesNoWrites) {
  installGoodDatabase();
  const std::size_t before = historyRows();
  // The superuser writes through any permission, so the operations run as an
  // ordinary user, who may read the file and its folder but write neither.
  fs::permissions(env.root.path(), fs::perms::owner_all | fs::perms::group_exec |
                                       fs::perms::others_exec);
  fs::permissions(file(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
  testing::runInChildProcess([&] {
    if (::geteuid() == 0) {
      ASSERT_EQ(::setgid(65534), 0);
      ASSERT_EQ(::setuid(65534), 0);
    }
    Answers answers = runEveryOperation();
    EXPECT_EQ(answers.blacklist, std::vector<host::Text>{T("4917012345")});
    EXPECT_TRUE(answers.duplicate);
    EXPECT_EQ(answers.announcements, 2u);
  });
  EXPECT_EQ(historyRows(), before);
  fs::permissions(file(), fs::perms::owner_read | fs::perms::owner_write);
  expectSoundAgain("read-only");
}

}  // namespace
}  // namespace hushwall
