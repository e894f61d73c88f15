// The block history and the pictures against a real SQLite file and real
// folders in a temporary device root, sound or damaged.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>

#include "model/hushwall.h"
#include "startup/blacklist.h"
#include "startup/notification_names.h"
#include "testing/child_process.h"
#include "testing/fake_env.h"
#include "testing/file_tree.h"
#include "testing/history_snapshot.h"
#include "testing/open_descriptors.h"
#include "testing/process_state.h"

namespace hushwall {
namespace {

namespace fs = std::filesystem;
using host::T;
using host::Value;
using testing::HistoryRow;
using testing::readHistoryRows;
using std::nullopt;

const std::string kData = "/var/mobile/Library/Preferences/Hushwall";

Value record(std::initializer_list<std::pair<const char*, Value>> entries) {
  host::Dict dict;
  for (const auto& [key, value] : entries) dict.emplace(T(key), value);
  return Value::dictionary(std::move(dict));
}

class HistoryTest : public ::testing::Test {
 protected:
  std::string file() const { return env.root.databaseFile(); }
  void expectRows(const std::vector<HistoryRow>& expected) {
    const std::vector<HistoryRow> rows = readHistoryRows(file());
    ASSERT_EQ(rows.size(), expected.size());
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_TRUE(testing::sameRow(rows[i], expected[i])) << "row " << i;
  }
  Hushwall& hw = *Hushwall::sharedInstance();
  testing::FakeEnv env;
  testing::FreshProcessState state;
};

TEST_F(HistoryTest, ADuplicateIsOnlyTheNewestRowOfTheSameNumberAndMessage) {
  env.root.installDatabase();
  testing::execSql(file(),
                   "INSERT INTO History (phoneNumber, message, date) VALUES "
                   "('491', 'recent', 1399999880.1), ('491', 'edge', 1399999880.0), "
                   "('491', 'later', 1400000005.0), ('491', 'pair', 1399999500.0), "
                   "('491', 'pair', 1400000300.0), ('491', 'old', 1399999500.0), "
                   "(NULL, 'nonumber', 1400000000.0), ('491', NULL, 1400000000.0)");
  // Within 120 s before (exactly 120 s is not), or stored after; the same
  // number, the same case; NULL equals nothing, not even a stored NULL.
  const std::tuple<const char*, const char*, bool> cases[] = {
      {"recent", "491", true}, {"edge", "491", false}, {"later", "491", true}, {"recent", "492", false},
      {"Recent", "491", false}, {"pair", "491", true}, {"old", "491", false}, {"never", "491", false},
      {"nonumber", nullptr, false}, {nullptr, "491", false}};
  for (const auto& [message, number, duplicate] : cases) {
    EXPECT_EQ(hw.existMessage(message ? host::OptText(T(message)) : nullopt,
                              number ? host::OptText(T(number)) : nullopt, 1400000000.0),
              duplicate) << (message ? message : "(null)");
  }
}

TEST_F(HistoryTest, SingleRowWritersStoreTheirArgumentsInColumnOrder) {
  env.root.installDatabase();
  hw.addHistoryWithPhoneNumber(T("491"), nullopt, T("short"), 1400000000.25, kBLOCK_TYPE_APP, true);
  // isMine comes before the media values among the arguments but is bound
  // last; distinct values show a swap. No single-precision rounding here.
  hw.addHistoryWithPhoneNumber(T("492"), T("Bob"), T("long"), 1400000001.75, kBLOCK_TYPE_NOTIFICATION, true, 7,
                               T("/x/492-1.png"), nullopt);
  expectRows({{"491", nullopt, "short", 1400000000.25, 1, 0, "", "", 1},  // empty media, not NULL
              {"492", "Bob", "long", 1400000001.75, 2, 7, "/x/492-1.png", nullopt, 1}});
  // Each single-row write leaves its connection open; readers close theirs.
  hw.existMessage(T("short"), T("491"), 1.0);
  EXPECT_EQ(testing::openDescriptorsOf(file()), 2u);
  EXPECT_EQ(env.notifyCenter.posted, std::vector<std::string>(2, kNewMessagedAddedNotification));
}

TEST_F(HistoryTest, BatchReadsEachRecordsKeysAsThePlatformWouldAndCommitsEachRow) {
  env.root.installDatabase();
  // A row that rolls back whatever transaction is open: inside a batch-wide
  // transaction it would take the rows before it along.
  testing::execSql(file(), "CREATE TRIGGER refuse BEFORE INSERT ON History WHEN NEW.message = 'bad' "
                           "BEGIN SELECT RAISE(ROLLBACK, 'refused'); END;");
  hw.addHistoryWithArray({});  // no statement, so the close works
  EXPECT_TRUE(readHistoryRows(file()).empty());
  EXPECT_EQ(testing::openDescriptorsOf(file()), 0u);
  EXPECT_EQ(env.notifyCenter.posted, std::vector<std::string>{kNewMessagedAddedNotification});

  env.notifyCenter.posted.clear();
  hw.addHistoryWithArray({
      record({{"phoneNumber", Value::string(T("491"))}, {"name", Value::string(T("Ann"))},
              {"message", Value::string(T("one"))}, {"timestamp", Value::real(1400000050.0)},
              {"blockType", Value::integer(2)}, {"isMine", Value::boolean(true)}, {"mediaType", Value::integer(1)},
              {"mediaFileName", Value::string(T("/f.png"))}, {"mediaURL", Value::string(T("https://m/1"))}}),
      // The incoming filter's own key for the block type is not the one read.
      record({{"phoneNumber", Value::string(T("492"))}, {"message", Value::string(T("two"))},
              {"timestamp", Value::real(1400000100.0)}, {"blockType:kBLOCK_TYPE_APP", Value::integer(1)}}),
      record({{"message", Value::string(T("bad"))}}),
      // A number where a string belongs, a string where a number belongs.
      record({{"name", Value::integer(5)}, {"timestamp", Value::string(T("12.5"))}}),
      record({}),
  });
  EXPECT_EQ(testing::openDescriptorsOf(file()), 1u);  // one connection for the batch, left open
  // Times go through a float: multiples of 128 s.
  expectRows({{"491", "Ann", "one", 1400000000.0, 2, 1, "/f.png", "https://m/1", 1},
              {"492", nullopt, "two", 1400000128.0, 0, 0, nullopt, nullopt, 0},
              {nullopt, nullopt, nullopt, 12.5, 0, 0, nullopt, nullopt, 0},
              {nullopt, nullopt, nullopt, 0.0, 0, 0, nullopt, nullopt, 0}});
  EXPECT_EQ(env.notifyCenter.posted, std::vector<std::string>{kNewMessagedAddedNotification});
}

TEST_F(HistoryTest, PicturesGoIntoOneFolderPerNumberNamedByTheTime) {
  // Not even the data directory exists yet.
  host::Text path = hw.saveImageOnDiskWithData(host::Bytes{'a', 0, 'b'}, T("4917012345"));
  EXPECT_EQ(host::toUtf8(path), kData + "/4917012345/4917012345-1400000000.500000.png");
  EXPECT_EQ(testing::fileBytes(env.root.native(host::toUtf8(path))), std::string("a\0b", 3));
  // The same microsecond gives the same path; the second picture wins.
  env.clock.time = 1400000001.0000004;
  host::Text first = hw.saveImageOnDiskWithData(host::Bytes{'1'}, T("4917012345"));
  env.clock.time = 1400000001.0000001;
  EXPECT_EQ(hw.saveImageOnDiskWithData(host::Bytes{'2'}, T("4917012345")), first);
  EXPECT_EQ(testing::fileBytes(env.root.native(host::toUtf8(first))), "2");
  // An absent number prints as "(null)" in the folder and the file name.
  path = hw.saveImageOnDiskWithData(host::Bytes{'n'}, nullopt);
  EXPECT_EQ(host::toUtf8(path), kData + "/(null)/(null)-1400000001.000000.png");
  EXPECT_EQ(testing::fileBytes(env.root.native(host::toUtf8(path))), "n");
  // No bytes: nothing is written, the folder is still made, the path returned.
  path = hw.saveImageOnDiskWithData(nullopt, T("555"));
  EXPECT_EQ(host::toUtf8(path), kData + "/555/555-1400000001.000000.png");
  EXPECT_TRUE(fs::is_directory(env.root.native(kData + "/555")));
  EXPECT_FALSE(fs::exists(env.root.native(host::toUtf8(path))));
  // Dots inside a name are just characters.
  EXPECT_TRUE(fs::exists(env.root.native(host::toUtf8(hw.saveImageOnDiskWithData(host::Bytes{'p'}, T("..49."))))));
}

TEST_F(HistoryTest, ANumberThatNamesNoFolderOfItsOwnLosesThePictureButNotThePath) {
  // Each would put the picture outside its own folder: above the data
  // directory, loose in it, or (cut at the NUL) in another number's folder.
  for (const host::Text& number : {T("../../../../../../../tmp/x/4917"), T("4917/../.."), T(".."), T("."), T("/"),
                                   T("4917") + host::Text(1, u'\0') + T("x")}) {
    SCOPED_TRACE(host::toUtf8(number));
    const std::string path = host::toUtf8(hw.saveImageOnDiskWithData(host::Bytes{'p'}, number));
    EXPECT_EQ(path.rfind(kData + "/", 0), 0u);
    EXPECT_NE(path.find("-1400000000.500000.png"), std::string::npos) << "returned all the same, for the row";
    EXPECT_TRUE(fs::is_empty(env.root.path())) << "nothing is made anywhere";
  }
  // A plain file in place of the number's folder stays as it is.
  const std::string blocker = env.root.native(kData + "/491");
  fs::create_directories(fs::path(blocker).parent_path());
  std::ofstream(blocker) << "not a folder";
  const std::string path = host::toUtf8(hw.saveImageOnDiskWithData(host::Bytes{'x'}, T("491")));
  EXPECT_EQ(path, kData + "/491/491-1400000000.500000.png");
  EXPECT_EQ(testing::fileBytes(blocker), "not a folder");
  EXPECT_FALSE(fs::exists(env.root.native(path)));
}

// The database file damaged, replaced, locked or taken away under the model:
// every operation returns quietly with its answer for "nothing" (an empty
// blacklist, no duplicate, a lost write that is still announced), leaves
// whatever is at the database's place as it found it, and works again as
// soon as a sound file is back.
class HostileDatabaseTest : public HistoryTest {
 protected:
  // One blacklisted number and one history row, spread over enough pages
  // that a cut-off file is missing some of them.
  void installGoodDatabase() {
    fs::remove_all(file());
    env.root.installDatabase();
    testing::execSql(file(), "INSERT INTO Blacklist (name, phoneNumber) VALUES ('Ann', '4917012345');"
                             "INSERT INTO History (phoneNumber, message, date) VALUES ('4917012345', 'hello', 1400000000.0);"
                             "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200) "
                             "INSERT INTO History (phoneNumber, message, date) "
                             "SELECT '4930999', printf('filler %d %s', i, hex(randomblob(40))), i FROM n;");
  }
  // Every operation of the model and the blacklist reload; none may throw.
  // `sound`: what a readable file answers; otherwise nothing is read.
  void expectEveryOperation(bool sound, const std::string& fault) {
    env.notifyCenter.posted.clear();
    ContactsChanged();
    EXPECT_EQ(*blacklistNumbers, sound ? std::vector<host::Text>{T("4917012345")} : std::vector<host::Text>{})
        << fault;  // a reload that fails leaves the list empty, not stale
    EXPECT_EQ(hw.existMessage(T("hello"), T("4917012345"), 1400000010.0), sound) << fault;
    hw.addHistoryWithPhoneNumber(T("4917012345"), T("Ann"), T("single"), 1400000010.0, kBLOCK_TYPE_NOTIFICATION,
                                 false);
    hw.addHistoryWithArray({record({{"phoneNumber", Value::string(T("4917012345"))},
                                    {"message", Value::string(T("batched"))}})});
    EXPECT_EQ(env.notifyCenter.posted.size(), 2u) << fault;  // lost or not, one post per writer call
  }
  // After the damage is repaired the same operations see and store rows.
  void expectSoundAgain(const std::string& fault) {
    installGoodDatabase();
    const std::size_t before = readHistoryRows(file()).size();
    expectEveryOperation(true, fault);
    EXPECT_EQ(readHistoryRows(file()).size(), before + 2) << fault;
  }
};

TEST_F(HostileDatabaseTest, DamagedOrMissingFilesReadAsNothingAndLoseWritesQuietly) {
  std::mt19937 random(7);
  std::string noise(16384, '\0');
  for (char& c : noise) c = static_cast<char>(random());
  const std::string folder = fs::path(file()).parent_path();
  const std::pair<const char*, std::function<void()>> faults[] = {
      {"cut inside the header", [&] { fs::resize_file(file(), 60); }},
      {"cut after the first page", [&] { fs::resize_file(file(), 4096); }},
      {"cut in the middle", [&] { fs::resize_file(file(), fs::file_size(file()) / 2); }},
      {"random bytes", [&] { std::ofstream(file(), std::ios::binary | std::ios::trunc) << noise; }},
      {"an SQLite file without the tables", [&] { fs::remove(file()), testing::execSql(file(), "CREATE TABLE Other (x)"); }},
      {"tables of another shape",
       [&] { fs::remove(file()), testing::execSql(file(), "CREATE TABLE Blacklist (number); CREATE TABLE History (x)"); }},
      {"a directory in its place", [&] { fs::remove(file()), fs::create_directory(file()); }},
      {"no database file", [&] { fs::remove(file()); }},
      {"no data directory", [&] { fs::remove_all(folder); }}};
  for (const auto& [fault, damage] : faults) {
    installGoodDatabase();
    damage();
    const bool wasFile = fs::is_regular_file(file());
    const std::string bytesBefore = wasFile ? testing::fileBytes(file()) : "";
    expectEveryOperation(false, fault);
    // Nothing was repaired, overwritten or made behind the user's back.
    EXPECT_EQ(wasFile ? testing::fileBytes(file()) : "", bytesBefore) << fault;
    EXPECT_EQ(fs::is_directory(file()) && fs::is_empty(file()), std::string(fault) == "a directory in its place");
    EXPECT_EQ(fs::exists(folder), std::string(fault) != "no data directory") << fault;
    // Only a missing file is opened as a new, empty one, without tables.
    EXPECT_EQ(fs::exists(file()), std::string(fault) != "no data directory") << fault;
    expectSoundAgain(fault);
  }
  std::printf("hushwall-figure: hostile database: %zu damaged or missing files survived\n", std::size(faults));
}

TEST_F(HostileDatabaseTest, AFileLockedByAnotherWriterLosesWritesUntilItIsReleased) {
  installGoodDatabase();
  const std::size_t before = readHistoryRows(file()).size();
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(file().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  expectEveryOperation(false, "locked");
  ASSERT_EQ(sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(other);
  EXPECT_EQ(readHistoryRows(file()).size(), before);  // no write slipped in late
  expectSoundAgain("locked");
}

TEST_F(HostileDatabaseTest, AReadOnlyFileIsStillReadButTakesNoWrites) {
  installGoodDatabase();
  const std::size_t before = readHistoryRows(file()).size();
  // The superuser writes through any permission, so the operations run as an
  // ordinary user, who may read the file and its folder but write neither.
  fs::permissions(env.root.path(), fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
  fs::permissions(file(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
  testing::runInChildProcess([&] {
    if (::geteuid() == 0) {
      ASSERT_EQ(::setgid(65534), 0);
      ASSERT_EQ(::setuid(65534), 0);
    }
    expectEveryOperation(true, "read-only");
  });
  EXPECT_EQ(readHistoryRows(file()).size(), before);
  fs::permissions(file(), fs::perms::owner_read | fs::perms::owner_write);
  expectSoundAgain("read-only");
}

}  // namespace
}  // namespace hushwall
