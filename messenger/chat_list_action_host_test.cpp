// The blacklist button inside a WhatsApp process: which sheet gets it, the
// confirmation it asks, and what each answer does to the Blacklist table.
#include <gtest/gtest.h>

#include <tuple>

#include "messenger/whatsapp_test_process.h"
#include "simhost/host_log.h"
#include "simhost/whatsapp_classes.h"

namespace hushwall::testing {
namespace {

using simhost::hostLog;
using Titles = std::vector<std::string>;

constexpr char kAdd[] = "Add to Blacklist";
constexpr char kRemove[] = "Remove from Blacklist";

// The user opens a chat's options (the cell as the chat list has it).
void openOptions(simhost::SimulatedApp& app, const simhost::OptString& jid,
                 const simhost::OptString& name) {
  app.send(app.make("ChatListViewController"), "chatSessionCellShowMoreOptions:",
           {simhost::makeCell(app.runtime(), jid, name)});
}

// The messenger builds an action sheet; the titles of the buttons added to it.
Titles buildSheet(simhost::SimulatedApp& app) {
  app.sendToClass("WABlockBasedActionSheet", "actionSheetWithTitle:",
                  {host::Value::string(host::T("Chat"))});
  Titles titles;
  for (const auto& button : hostLog().sheets.back().buttons) titles.push_back(button.first);
  return titles;
}

// Opens the chat's options, expects the one button `title` on the sheet and
// taps it; the confirmation's message.
std::string tap(simhost::SimulatedApp& app, const simhost::OptString& jid,
                const simhost::OptString& name, const char* title) {
  openOptions(app, jid, name);
  EXPECT_EQ(buildSheet(app), Titles{title});
  simhost::tapButton(title);
  return host::toUtf8(app.device().alerts().shown().back().message);
}

class ChatListActionTest : public ::testing::Test {
 protected:
  void SetUp() override { device.installDatabase(); }
  TestDevice device;
};

TEST_F(ChatListActionTest, SwitchedOffTheSheetIsLeftAlone) {
  device.writeFlags({{"ActionButton", false}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) {
    openOptions(app, "34600111222@s.whatsapp.net", "Bob");
    EXPECT_EQ(hostLog().optionsOpened.size(), 1u);
    EXPECT_TRUE(buildSheet(app).empty());
  });
}

TEST_F(ChatListActionTest, OneButtonPerNotedChatAndOnlyYesAddsIt) {
  device.writeFlags({{"ActionButton", true}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter& posted) {
    openOptions(app, "34600111222@s.whatsapp.net", "Bob");
    // A row without a JID is not noted and leaves Bob pending.
    openOptions(app, std::nullopt, "Group");
    EXPECT_EQ(hostLog().optionsOpened.size(), 2u);
    EXPECT_EQ(buildSheet(app), Titles{kAdd});
    simhost::tapButton(kAdd);
    const host::AlertView& alert = app.device().alerts().shown().back();
    EXPECT_EQ(host::toUtf8(alert.message), "Would you like to blacklist Bob (34600111222) ?");
    EXPECT_EQ(std::tie(alert.title, alert.cancelButtonTitle, alert.tag),
              std::make_tuple(host::T("Hushwall"), host::T("No"), 989898));
    EXPECT_EQ(alert.otherButtonTitles, std::vector<host::Text>{host::T("Yes")});
    EXPECT_TRUE(buildSheet(app).empty());  // the next sheet is some other sheet
    app.device().alerts().answer(0);
    ASSERT_TRUE(posted.settle());
    EXPECT_EQ(posted.count(kContactsChanged), 0);
    EXPECT_TRUE(device.blacklist().empty());

    // A chat without a name label.
    EXPECT_EQ(tap(app, "34600333444@s.whatsapp.net", std::nullopt, kAdd),
              "Would you like to blacklist Anonymous (34600333444) ?");
    app.device().alerts().answer(1);
    EXPECT_EQ(device.blacklist(), (std::vector<BlacklistRow>{{"Anonymous", "34600333444"}}));
    ASSERT_TRUE(posted.waitFor(kContactsChanged));
    // This process has reloaded its list: the same chat now offers removal.
    openOptions(app, "34600333444@s.whatsapp.net", std::nullopt);
    EXPECT_EQ(buildSheet(app), Titles{kRemove});
  });
}

TEST_F(ChatListActionTest, RemoveDeletesTheStoredEntryThatCoversTheChat) {
  device.addToBlacklist("699999999", "Zed");
  device.addToBlacklist("612345678", "Carl");
  device.writeFlags({{"ActionButton", true}});
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter& posted) {
    EXPECT_EQ(tap(app, "34612345678@s.whatsapp.net", "Carl", kRemove),
              "Would you like to unblacklist Carl (34612345678) ?");
    EXPECT_EQ(app.device().alerts().shown().back().tag, 979797);
    app.device().alerts().answer(0);
    ASSERT_TRUE(posted.settle());
    EXPECT_EQ(posted.count(kContactsChanged), 0);
    EXPECT_EQ(device.blacklist().size(), 2u);

    tap(app, "34612345678@s.whatsapp.net", "Carl", kRemove);
    app.device().alerts().answer(1);
    EXPECT_EQ(device.blacklist(), (std::vector<BlacklistRow>{{"Zed", "699999999"}}));
    ASSERT_TRUE(posted.waitFor(kContactsChanged));
    openOptions(app, "34612345678@s.whatsapp.net", "Carl");
    EXPECT_EQ(buildSheet(app), Titles{kAdd});
  });
}

}  // namespace
}  // namespace hushwall::testing
