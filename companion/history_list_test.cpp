// The history as the settings bundle shows and clears it, on a real device
// root with real picture files and database.
#include "companion/history_list.h"

#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>

#include "companion/display_text.h"
#include "platform/linux/device_root_file_system.h"
#include "startup/notification_names.h"
#include "testing/database_rows.h"
#include "testing/fake_env.h"
#include "testing/temp_device_root.h"

namespace hushwall::companion {
namespace {

namespace fs = std::filesystem;
using testing::execSql;

const std::string kData = "/var/mobile/Library/Preferences/Hushwall";

struct HistoryDevice {
  HistoryDevice() { root.installDatabase(); }
  // A file under the root with some bytes; returns its device path.
  std::string file(const std::string& devicePath) {
    fs::create_directories(fs::path(root.native(devicePath)).parent_path());
    std::ofstream(root.native(devicePath)) << "bytes";
    return devicePath;
  }
  bool exists(const std::string& devicePath) { return fs::exists(root.native(devicePath)); }
  void rows(const std::string& values) {
    execSql(root.databaseFile(), "INSERT INTO History (phoneNumber, name, message, date, blockType, mediaType,"
                                 " mediaFileName, mediaURL, isMine) VALUES " + values);
  }
  // Every file and folder under the root.
  std::set<std::string> tree() {
    std::set<std::string> paths;
    for (auto& e : fs::recursive_directory_iterator(root.path())) paths.insert(fs::relative(e.path(), root.path()));
    return paths;
  }
  testing::TempDeviceRoot root;
  linux_platform::DeviceRootFileSystem files{root.path()};
  testing::RecordingNotifyCenter notifications;
  HistoryList history{files, notifications, [](double s) { return "t" + std::to_string(static_cast<long long>(s)); }};
};

TEST(HistoryList, NewestFirstBySectionsWithKindsDatesAndPictures) {
  HistoryDevice device;
  const std::string picture = device.file(kData + "/4917/4917-1400000002.000000.png");
  device.rows("('4917', 'Spammer', 'Buy', 1400000000, 0, 0, '', '', 0), ('4930', 'Bob', 'hi', 1400000001, 2, 0, '', '', 0),"
              " ('4917', 'Spammer', 'pic', 1400000002, 0, 1, '" + picture + "', 'u', 0),"
              " ('4917', 'Me', 'stop', 1400000003, 1, 0, '', '', 1),"
              " ('4930', NULL, 'gone', 1400000004, 0, 1, '" + kData + "/4930/4930-1.png', '', 0)");
  std::vector<HistorySection> sections = device.history.sections();
  ASSERT_EQ(sections.size(), 2u);
  EXPECT_EQ(sections[0].title, "Bob (4930)") << "named after the newest row with a name";
  EXPECT_EQ(sections[1].title, "Spammer (4917)") << "not the user's own name";
  std::string shown;
  for (const HistorySection& section : sections) {
    for (const HistoryEntry& e : section.entries) {
      shown += e.message + "," + blockKindName(e.kind) + "," + e.date + "," + (e.hasPicture ? "pic" : "-") + ";";
    }
  }
  // A picture whose file is gone is not offered.
  EXPECT_EQ(shown, "gone,incoming,t1400000004,-;hi,notification,t1400000001,-;"
                   "stop,own,t1400000003,-;pic,incoming,t1400000002,pic;Buy,incoming,t1400000000,-;");
  EXPECT_EQ(sections[1].entries[1].picturePath, device.root.native(picture));
}

TEST(HistoryList, DeletingARowTakesItsPictureUnlessAnotherRowShowsIt) {
  HistoryDevice device;
  const std::string shared = device.file(kData + "/4917/4917-1.000000.png");
  const std::string own = device.file(kData + "/4930/4930-2.000000.png");
  device.rows("('4917', 'A', 'x', 1, 0, 1, '" + shared + "', '', 0), ('4917', 'A', 'x', 2, 0, 1, '" + shared +
              "', '', 0), ('4930', 'B', 'y', 3, 0, 1, '" + own + "', '', 0)");
  std::vector<HistoryEntry> entries = device.history.entries();
  ASSERT_EQ(entries.size(), 3u);
  device.history.remove(entries[0].id);  // 4930's only row: its picture goes
  EXPECT_FALSE(device.exists(own));
  device.history.remove(entries[1].id);  // the other row still shows the file
  EXPECT_TRUE(device.exists(shared));
  device.history.remove(entries[2].id);
  EXPECT_FALSE(device.exists(shared));
  EXPECT_TRUE(device.history.entries().empty());
  EXPECT_THROW(device.history.remove(entries[2].id), std::runtime_error);
  EXPECT_EQ(device.notifications.posted, std::vector<std::string>(3, kNewMessagedAddedNotification));
}

TEST(HistoryList, ClearingTakesTheRowsAndPicturesAndNothingElse) {
  HistoryDevice device;
  const std::string withRow = device.file(kData + "/4917/4917-1.000000.png");
  device.file(kData + "/4917/4917-9.000000.png");  // saved while the history was off
  device.file(kData + "/(null)/(null)-3.000000.png");
  // Not pictures of ours, whatever rows say, or saved a moment ago by a
  // batch whose rows are still to come: they all stay.
  const std::set<std::string> kept = {
      device.file(kData + "/4917/4917-" + std::to_string(time(nullptr) - 60) + ".000000.png"),
      device.file(kData + "/4917/notes.txt"), device.file(kData + "/other/photo.png"), device.file(kData + "/stray.png"),
      device.file(kData + "/4917/4917-1.000000.jpg"), device.file(kData + "/4917/4917-1x.000000.png"),
      device.file("/var/mobile/secret.png"),
      device.file("/var/mobile/Library/Preferences/com.Corvanta.HushwallSettings.plist")};
  fs::create_directories(device.root.native(kData + "/4917-dir/4917-dir-1.png"));  // a folder
  device.rows("('4917', 'A', 'x', 1, 0, 1, '" + withRow + "', '', 0), ('4930', 'B', 'y', 2, 0, 1, '/var/mobile/secret.png', '', 0),"
              " ('4930', 'B', 'z', 3, 0, 1, '" + kData + "/../../../secret.png', '', 0),"
              " ('4930', 'B', 'w', 4, 0, 1, '" + kData + "/stray.png', '', 0)");
  execSql(device.root.databaseFile(), "INSERT INTO Blacklist (name, phoneNumber) VALUES ('A', '4917')");
  const std::set<std::string> before = device.tree();

  ClearedHistory cleared = device.history.clear();
  EXPECT_EQ(cleared.rows, 4);
  EXPECT_EQ(cleared.pictures, 3);
  EXPECT_TRUE(testing::readHistoryRows(device.root.databaseFile()).empty());
  std::set<std::string> gone = before;
  for (const std::string& path : device.tree()) gone.erase(path);
  const std::string data = kData.substr(1);
  EXPECT_EQ(gone, (std::set<std::string>{data + "/4917/4917-1.000000.png", data + "/4917/4917-9.000000.png",
                                         data + "/(null)/(null)-3.000000.png"}));
  for (const std::string& path : kept) EXPECT_TRUE(device.exists(path)) << path;
  EXPECT_EQ(device.notifications.posted, std::vector<std::string>{kNewMessagedAddedNotification});
  EXPECT_EQ(device.history.clear().rows, 0) << "clearing an empty history is no error";
}

TEST(HistoryList, HostileRowsRenderAsBoundedValidText) {
  HistoryDevice device;
  execSql(device.root.databaseFile(),
          "INSERT INTO History (phoneNumber, name, message, date, blockType, mediaType, mediaFileName, isMine)"
          " VALUES (NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL),"
          " (CAST(X'34FF39' AS TEXT), CAST(X'C0AF00' AS TEXT), X'41004200', 'soon', 'x', 1, X'FF', 'x'),"
          " ('4917', 'E', replace(hex(zeroblob(600000)), '00', 'é'), 1e300, 2, 1, '/', 0),"
          " ('4917', 'E', replace(hex(zeroblob(600)), '00', '😀'), -1e300, 0, 0, NULL, 0)");
  std::vector<HistoryEntry> entries = device.history.entries();
  ASSERT_EQ(entries.size(), 4u);
  for (const HistoryEntry& e : entries) {
    for (const std::string* text : {&e.phoneNumber, &e.name, &e.message, &e.date}) {
      EXPECT_EQ(displayText(*text, text->size()), *text) << "valid UTF-8 without NUL";
      EXPECT_LE(host::fromUtf8(*text).size(), 2 * kDisplayCharacters + 1);
    }
    EXPECT_FALSE(e.hasPicture);
  }
  // Text dates sort after numbers, NULL before them.
  const HistoryEntry &broken = entries[0], &huge = entries[1], &emoji = entries[2], &empty = entries[3];
  // A text is no date, isMine 'x' counts as 0, no formatter is asked about
  // 1e300 seconds.
  EXPECT_EQ(broken.phoneNumber + "|" + broken.name + "|" + broken.message + "|" + broken.date + "|" +
                blockKindName(broken.kind),
            "4\uFFFD9|\uFFFD\uFFFD\uFFFD|A\uFFFDB\uFFFD||incoming");
  EXPECT_EQ(huge.date + blockKindName(huge.kind), "notification");
  EXPECT_EQ(host::fromUtf8(huge.message), host::Text(kDisplayCharacters, u'\u00e9') + u"\u2026");
  EXPECT_EQ(host::fromUtf8(emoji.message).size(), 2 * kDisplayCharacters + 1) << "cut between surrogate pairs, never inside one";
  EXPECT_EQ(empty.message + empty.name + empty.phoneNumber + empty.date, "");
  EXPECT_EQ(device.history.sections().size(), 3u);

  // The formatters' range, both ends included.
  execSql(device.root.databaseFile(),
          "DELETE FROM History; INSERT INTO History (phoneNumber, date) VALUES"
          " ('before', -62135596801), ('first', -62135596800), ('last', 253402300799), ('after', 253402300800)");
  std::set<std::string> dated;
  for (const HistoryEntry& e : device.history.entries()) {
    if (!e.date.empty()) dated.insert(e.phoneNumber);
  }
  EXPECT_EQ(dated, (std::set<std::string>{"first", "last"}));
}

}  // namespace
}  // namespace hushwall::companion
