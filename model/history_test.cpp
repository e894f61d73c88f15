// The block history against a real SQLite file in a temporary device root.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

#include "model/hushwall.h"
#include "startup/notification_names.h"
#include "testing/database_rows.h"
#include "testing/fake_env.h"
#include "testing/open_descriptors.h"

namespace hushwall {
namespace {

namespace fs = std::filesystem;
using host::T;
using host::Value;
using testing::readHistoryRows;

const std::vector<std::string> kOnePost = {kNewMessagedAddedNotification};

Value record(std::initializer_list<std::pair<const char*, Value>> entries) {
  host::Dict dict;
  for (const auto& [key, value] : entries) dict.emplace(T(key), value);
  return Value::dictionary(std::move(dict));
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(ExistMessage, OnlyTheNewestRowOfTheSameNumberAndMessageCounts) {
  testing::FakeEnv env;
  env.root.installDatabase();
  const double t = 1400000000.0;
  testing::execSql(env.root.databaseFile(),
                   "INSERT INTO History (phoneNumber, message, date) VALUES "
                   "('491', 'recent', 1399999880.1), ('491', 'edge', 1399999880.0), "
                   "('491', 'later', 1400000005.0), ('491', 'pair', 1399999500.0), "
                   "('491', 'pair', 1400000300.0), ('491', 'old', 1399999500.0), "
                   "(NULL, 'nonumber', 1400000000.0), ('491', NULL, 1400000000.0)");
  Hushwall& hw = *Hushwall::sharedInstance();
  EXPECT_TRUE(hw.existMessage(T("recent"), T("491"), t));   // 119.9 s before
  EXPECT_FALSE(hw.existMessage(T("edge"), T("491"), t));    // exactly 120 s: not a duplicate
  EXPECT_TRUE(hw.existMessage(T("later"), T("491"), t));    // stored after the timestamp
  EXPECT_FALSE(hw.existMessage(T("recent"), T("492"), t));  // another number
  EXPECT_FALSE(hw.existMessage(T("Recent"), T("491"), t));  // case matters
  EXPECT_TRUE(hw.existMessage(T("pair"), T("491"), t));     // 500 s before and 300 s after
  EXPECT_FALSE(hw.existMessage(T("old"), T("491"), t));
  EXPECT_FALSE(hw.existMessage(T("never"), T("491"), t));
  // NULL equals nothing, not even a stored NULL.
  EXPECT_FALSE(hw.existMessage(T("nonumber"), std::nullopt, t));
  EXPECT_FALSE(hw.existMessage(std::nullopt, T("491"), t));
}

TEST(ExistMessage, AnswersNoWithoutADatabase) {
  testing::FakeEnv env;
  EXPECT_FALSE(Hushwall::sharedInstance()->existMessage(T("hi"), T("491"), 1.0));
  // The folder exists but the file does not: the open makes an empty file
  // without tables and the prepare fails.
  fs::create_directories(fs::path(env.root.databaseFile()).parent_path());
  EXPECT_FALSE(Hushwall::sharedInstance()->existMessage(T("hi"), T("491"), 1.0));
  EXPECT_TRUE(fs::exists(env.root.databaseFile()));
}

TEST(AddHistory, SingleRowWritersStoreTheirArgumentsInColumnOrder) {
  testing::FakeEnv env;
  env.root.installDatabase();
  Hushwall& hw = *Hushwall::sharedInstance();
  hw.addHistoryWithPhoneNumber(T("491"), std::nullopt, T("short"), 1400000000.25,
                               kBLOCK_TYPE_APP, true);
  // isMine comes before the media values among the arguments but is bound
  // last; distinct values show a swap.
  hw.addHistoryWithPhoneNumber(T("492"), T("Bob"), T("long"), 1400000001.75,
                               kBLOCK_TYPE_NOTIFICATION, true, 7, T("/x/492-1.png"),
                               std::nullopt);

  auto rows = readHistoryRows(env.root.databaseFile());
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].phoneNumber, "491");
  EXPECT_EQ(rows[0].name, std::nullopt);
  EXPECT_EQ(rows[0].message, "short");
  EXPECT_EQ(rows[0].date, 1400000000.25);  // no single-precision rounding here
  EXPECT_EQ(rows[0].blockType, 1);
  EXPECT_EQ(rows[0].mediaType, 0);
  EXPECT_EQ(rows[0].mediaFileName, "");  // empty, not NULL
  EXPECT_EQ(rows[0].mediaURL, "");
  EXPECT_EQ(rows[0].isMine, 1);

  EXPECT_EQ(rows[1].name, "Bob");
  EXPECT_EQ(rows[1].date, 1400000001.75);
  EXPECT_EQ(rows[1].blockType, 2);
  EXPECT_EQ(rows[1].mediaType, 7);
  EXPECT_EQ(rows[1].isMine, 1);
  EXPECT_EQ(rows[1].mediaFileName, "/x/492-1.png");
  EXPECT_EQ(rows[1].mediaURL, std::nullopt);

  EXPECT_EQ(env.notifyCenter.posted, std::vector<std::string>(2, kNewMessagedAddedNotification));
}

TEST(AddHistory, BatchReadsEachRecordsKeysAsThePlatformWould) {
  testing::FakeEnv env;
  env.root.installDatabase();
  Hushwall& hw = *Hushwall::sharedInstance();

  hw.addHistoryWithArray({});
  EXPECT_TRUE(readHistoryRows(env.root.databaseFile()).empty());
  EXPECT_EQ(env.notifyCenter.posted, kOnePost);

  env.notifyCenter.posted.clear();
  hw.addHistoryWithArray({
      record({{"phoneNumber", Value::string(T("491"))}, {"name", Value::string(T("Ann"))},
              {"message", Value::string(T("one"))}, {"timestamp", Value::real(1400000050.0)},
              {"blockType", Value::integer(2)}, {"isMine", Value::boolean(true)},
              {"mediaType", Value::integer(1)}, {"mediaFileName", Value::string(T("/f.png"))},
              {"mediaURL", Value::string(T("https://m/1"))}}),
      // The incoming filter's own key for the block type is not the one read.
      record({{"phoneNumber", Value::string(T("492"))}, {"message", Value::string(T("two"))},
              {"timestamp", Value::real(1400000100.0)},
              {"blockType:kBLOCK_TYPE_APP", Value::integer(1)}}),
      record({{"name", Value::integer(5)}, {"timestamp", Value::string(T("12.5"))}}),
      record({}),
  });

  auto rows = readHistoryRows(env.root.databaseFile());
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0].phoneNumber, "491");
  EXPECT_EQ(rows[0].name, "Ann");
  EXPECT_EQ(rows[0].message, "one");
  EXPECT_EQ(rows[0].date, 1400000000.0);  // through a float: multiples of 128 s
  EXPECT_EQ(rows[0].blockType, 2);
  EXPECT_EQ(rows[0].isMine, 1);
  EXPECT_EQ(rows[0].mediaType, 1);
  EXPECT_EQ(rows[0].mediaFileName, "/f.png");
  EXPECT_EQ(rows[0].mediaURL, "https://m/1");

  EXPECT_EQ(rows[1].date, 1400000128.0);
  EXPECT_EQ(rows[1].blockType, 0);
  EXPECT_EQ(rows[1].name, std::nullopt);
  EXPECT_EQ(rows[1].isMine, 0);
  EXPECT_EQ(rows[1].mediaType, 0);
  EXPECT_EQ(rows[1].mediaFileName, std::nullopt);
  EXPECT_EQ(rows[1].mediaURL, std::nullopt);

  EXPECT_EQ(rows[2].name, std::nullopt);  // a number where a string belongs
  EXPECT_EQ(rows[2].date, 12.5);
  EXPECT_EQ(rows[3].date, 0.0);
  EXPECT_EQ(rows[3].phoneNumber, std::nullopt);
  EXPECT_EQ(env.notifyCenter.posted, kOnePost);
}

TEST(AddHistory, BatchCommitsEveryRowByItself) {
  testing::FakeEnv env;
  env.root.installDatabase();
  // A row that rolls back whatever transaction is open: inside a batch-wide
  // transaction it would take the rows before it along.
  testing::execSql(env.root.databaseFile(),
                   "CREATE TRIGGER refuse BEFORE INSERT ON History WHEN NEW.message = 'bad' "
                   "BEGIN SELECT RAISE(ROLLBACK, 'refused'); END;");
  Hushwall::sharedInstance()->addHistoryWithArray({
      record({{"message", Value::string(T("first"))}}),
      record({{"message", Value::string(T("bad"))}}),
      record({{"message", Value::string(T("last"))}}),
  });
  auto rows = readHistoryRows(env.root.databaseFile());
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].message, "first");
  EXPECT_EQ(rows[1].message, "last");
  EXPECT_EQ(env.notifyCenter.posted, kOnePost);
}

TEST(AddHistory, WritersLeaveTheirConnectionOpenAndReadersDoNot) {
  testing::FakeEnv env;
  env.root.installDatabase();
  const std::string file = env.root.databaseFile();
  Hushwall& hw = *Hushwall::sharedInstance();
  ASSERT_EQ(testing::openDescriptorsOf(file), 0u);

  hw.addHistoryWithPhoneNumber(T("491"), T("n"), T("m"), 1.0, 0, false);
  EXPECT_EQ(testing::openDescriptorsOf(file), 1u);
  hw.addHistoryWithArray({record({{"message", Value::string(T("a"))}}),
                          record({{"message", Value::string(T("b"))}})});
  EXPECT_EQ(testing::openDescriptorsOf(file), 2u);  // one connection for the batch
  hw.addHistoryWithArray({});                      // no statement, so the close works
  hw.existMessage(T("m"), T("491"), 1.0);
  EXPECT_EQ(testing::openDescriptorsOf(file), 2u);
}

TEST(AddHistory, LostWritesStillAnnounceAChange) {
  testing::FakeEnv env;
  Hushwall& hw = *Hushwall::sharedInstance();
  // No data directory: every open fails.
  hw.addHistoryWithPhoneNumber(T("491"), T("n"), T("m"), 1.0, 0, false);
  hw.addHistoryWithArray({record({{"message", Value::string(T("a"))}})});
  EXPECT_FALSE(fs::exists(fs::path(env.root.databaseFile()).parent_path()));
  EXPECT_EQ(env.notifyCenter.posted, std::vector<std::string>(2, kNewMessagedAddedNotification));

  // Another process holds the write lock: with no busy timeout the step
  // fails at once and the row is lost.
  env.root.installDatabase();
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(env.root.databaseFile().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  hw.addHistoryWithPhoneNumber(T("491"), T("n"), T("locked"), 1.0, 0, false);
  ASSERT_EQ(sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(other);
  EXPECT_TRUE(readHistoryRows(env.root.databaseFile()).empty());
  EXPECT_EQ(env.notifyCenter.posted.size(), 3u);
}

TEST(SaveImage, WritesIntoOneFolderPerNumberNamedByTheTime) {
  testing::FakeEnv env;  // not even the data directory exists yet
  Hushwall& hw = *Hushwall::sharedInstance();
  env.clock.time = 1400000000.5;
  host::Text path = hw.saveImageOnDiskWithData(host::Bytes{'a', 0, 'b'}, T("4917012345"));
  EXPECT_EQ(host::toUtf8(path),
            "/var/mobile/Library/Preferences/Hushwall/4917012345/"
            "4917012345-1400000000.500000.png");
  EXPECT_EQ(readFile(env.root.native(host::toUtf8(path))), std::string("a\0b", 3));

  // The same microsecond gives the same path; the second picture wins.
  env.clock.time = 1400000001.0000004;
  host::Text first = hw.saveImageOnDiskWithData(host::Bytes{'1'}, T("4917012345"));
  env.clock.time = 1400000001.0000001;
  host::Text second = hw.saveImageOnDiskWithData(host::Bytes{'2'}, T("4917012345"));
  EXPECT_EQ(first, second);
  EXPECT_EQ(readFile(env.root.native(host::toUtf8(second))), "2");

  // An absent number prints as "(null)" in the folder and the file name.
  path = hw.saveImageOnDiskWithData(host::Bytes{'n'}, std::nullopt);
  EXPECT_EQ(host::toUtf8(path),
            "/var/mobile/Library/Preferences/Hushwall/(null)/(null)-1400000001.000000.png");
  EXPECT_EQ(readFile(env.root.native(host::toUtf8(path))), "n");

  // No bytes: nothing is written, the folder is still made, the path returned.
  path = hw.saveImageOnDiskWithData(std::nullopt, T("555"));
  EXPECT_EQ(host::toUtf8(path),
            "/var/mobile/Library/Preferences/Hushwall/555/555-1400000001.000000.png");
  EXPECT_TRUE(fs::is_directory(env.root.native("/var/mobile/Library/Preferences/Hushwall/555")));
  EXPECT_FALSE(fs::exists(env.root.native(host::toUtf8(path))));
}

TEST(SaveImage, APlainFileInPlaceOfTheFolderLosesThePictureButNotThePath) {
  testing::FakeEnv env;
  const std::string blocker = env.root.native("/var/mobile/Library/Preferences/Hushwall/491");
  fs::create_directories(fs::path(blocker).parent_path());
  std::ofstream(blocker) << "not a folder";
  host::Text path = Hushwall::sharedInstance()->saveImageOnDiskWithData(host::Bytes{'x'}, T("491"));
  EXPECT_EQ(host::toUtf8(path),
            "/var/mobile/Library/Preferences/Hushwall/491/491-1400000000.500000.png");
  EXPECT_EQ(readFile(blocker), "not a folder");
  EXPECT_FALSE(fs::exists(env.root.native(host::toUtf8(path))));
}

TEST(SaveImage, ANumberThatNamesNoFolderOfTheDataDirectoryLosesItsPicture) {
  testing::FakeEnv env;
  Hushwall& hw = *Hushwall::sharedInstance();
  const std::string dataDirectory = "/var/mobile/Library/Preferences/Hushwall";
  const host::Text nul(1, u'\0');
  // Each would put the picture outside its own folder: above the data
  // directory, loose in it, or (cut at the NUL) in another number's folder.
  for (const host::Text& number :
       {T("../../../../../../../tmp/x/4917"), T("4917/../.."), T(".."), T("."), T("/"),
        T("4917") + nul + T("x")}) {
    SCOPED_TRACE(host::toUtf8(number));
    host::Text path = hw.saveImageOnDiskWithData(host::Bytes{'p'}, number);
    EXPECT_EQ(host::toUtf8(path).rfind(dataDirectory + "/", 0), 0u);
    EXPECT_NE(host::toUtf8(path).find("-1400000000.500000.png"), std::string::npos)
        << "the path is returned all the same, for the history row";
    EXPECT_FALSE(fs::exists(env.root.native(dataDirectory))) << "nothing is made anywhere";
    EXPECT_TRUE(fs::is_empty(env.root.path()));
  }
  // Dots inside a name are just characters.
  EXPECT_TRUE(fs::exists(env.root.native(host::toUtf8(hw.saveImageOnDiskWithData(host::Bytes{'p'}, T("..49."))))));
}

}  // namespace
}  // namespace hushwall
