// The blacklist editor on a real device root and database, announcing on a
// real bus.
#include "companion/blacklist_editor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>

#include "platform/linux/dbus_notify_center.h"
#include "platform/linux/device_root_file_system.h"
#include "startup/notification_names.h"
#include "testing/database_rows.h"
#include "testing/private_bus.h"
#include "testing/temp_device_root.h"

namespace hushwall::companion {
namespace {

using ::testing::HasSubstr;

template <typename Error, typename F>
std::string refusal(F&& change) {
  try {
    change();
  } catch (const Error& e) {
    return e.what();
  }
  return "(nothing thrown)";
}

TEST(BlacklistEditor, ChangesAreWrittenAnnouncedAndRefusedWithoutAWrite) {
  testing::TempDeviceRoot root;
  root.installDatabase();
  testing::PrivateBus bus(root.path());
  linux_platform::DeviceRootFileSystem files(root.path());
  linux_platform::DBusNotifyCenter poster(bus.address()), listener(bus.address());
  int announced = 0;
  listener.addObserver(kContactsChangedNotification, [&] { ++announced; }, host::SuspensionBehavior::kHold);
  BlacklistEditor editor(files, poster);
  auto listed = [&] {
    std::string text;
    for (const BlacklistEntry& entry : editor.entries()) text += entry.name + "=" + entry.phoneNumber + ";";
    return text;
  };

  editor.add("+49 (170) 123-45", "Mallory");
  editor.add("4930999", "");
  EXPECT_EQ(listed(), "Mallory=+49 (170) 123-45;Anonymous=4930999;");
  // Refused: malformed numbers, a name that is not text, a number already
  // listed as written. Nothing is written and nothing announced.
  for (std::string bad : {"", "4917x0", "4917;0", "+49\t170", "()", "4917\xff"}) {
    EXPECT_THAT(refusal<std::invalid_argument>([&] { editor.add(bad, "X"); }), HasSubstr("malformed phone number")) << bad;
  }
  EXPECT_THAT(refusal<std::invalid_argument>([&] { editor.add("4931", "Bad \xc3"); }), HasSubstr("not valid UTF-8"));
  EXPECT_EQ(refusal<std::invalid_argument>([&] { editor.add("4930999", "Again"); }),
            "'4930999' is already on the blacklist; nothing added");
  EXPECT_EQ(listed(), "Mallory=+49 (170) 123-45;Anonymous=4930999;");

  // The chat-list action may have listed a number twice; removing its row
  // unblocks the number, so both go.
  testing::execSql(root.databaseFile(),
                   "INSERT INTO Blacklist (name, phoneNumber) VALUES ('Twice', '4930999'), ('Nil', NULL)");
  const std::vector<BlacklistEntry> entries = editor.entries();
  ASSERT_EQ(entries.size(), 4u);
  EXPECT_EQ(entries[3].phoneNumber, "") << "a NULL number shows as empty";
  EXPECT_EQ(editor.removeEntry(entries[1].id), 2);
  EXPECT_EQ(editor.removeEntry(entries[3].id), 1) << "a row without a number goes alone";
  EXPECT_EQ(listed(), "Mallory=+49 (170) 123-45;");
  EXPECT_THAT(refusal<std::runtime_error>([&] { editor.removeEntry(entries[1].id); }), HasSubstr("no blacklist row"));
  // Removal by number matches the entry as written, not what it covers.
  EXPECT_THAT(refusal<std::runtime_error>([&] { editor.removeNumber("49170"); }), HasSubstr("not on the blacklist"));
  EXPECT_EQ(editor.removeNumber("+49 (170) 123-45"), 1);
  EXPECT_EQ(listed(), "");

  // Two adds and three removals were announced, and nothing else: a marker
  // posted after them arrives after them.
  poster.post(kContactsChangedNotification);
  EXPECT_TRUE(listener.runUntil([&] { return announced >= 6; }, std::chrono::seconds(5)));
  listener.runFor(std::chrono::milliseconds(100));
  EXPECT_EQ(announced, 6);

  // A statement the database refuses (here another writer's trigger) is
  // reported, not taken for done.
  testing::execSql(root.databaseFile(),
                   "CREATE TRIGGER refuse BEFORE INSERT ON Blacklist BEGIN SELECT RAISE(ABORT, 'refused'); END");
  EXPECT_THAT(refusal<std::runtime_error>([&] { editor.add("4917", "A"); }),
              ::testing::AllOf(HasSubstr("database error in "), HasSubstr("refused")));
  EXPECT_EQ(listed(), "");

  // A missing database is reported and not made.
  std::filesystem::remove(root.databaseFile());
  EXPECT_THAT(refusal<std::runtime_error>([&] { editor.add("4917", "A"); }),
              HasSubstr("no database at " + root.databaseFile()));
  EXPECT_FALSE(std::filesystem::exists(root.databaseFile()));
}

}  // namespace
}  // namespace hushwall::companion
