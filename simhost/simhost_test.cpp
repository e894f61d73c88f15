// The stand-ins behave as the apps would with no hook installed.
#include <gtest/gtest.h>

#include "simhost/host_log.h"
#include "simhost/springboard_classes.h"
#include "simhost/whatsapp_classes.h"

namespace hushwall::simhost {
namespace {

using host::Value;
using Strings = std::vector<std::string>;

class SimHostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    hostLog() = HostLog{};
    registerWhatsAppClasses(rt);
    registerSpringBoardClasses(rt);
  }
  void TearDown() override { hostLog() = HostLog{}; }

  Value send(const Value& receiver, const std::string& selector, host::Args args = {}) {
    return rt.send(receiver, selector, args);
  }
  Value cls(const std::string& name) { return rt.getClass(name); }

  linux_platform::ObjectRuntime rt;
};

TEST_F(SimHostTest, ConnectionDeliversStanzasAndReadsTheirMedia) {
  Value image = makeStanza(rt, "s2", "34600@s.whatsapp.net", std::nullopt, "Ann", 1400000000.25,
                           Media{1, "https://m/1", {0xFF, 0xD8}});
  Value text = makeStanza(rt, "s1", "34611@s.whatsapp.net", "hi", std::nullopt, std::nullopt);
  Value connection = rt.newObject("XMPPConnection");
  send(connection, "processIncomingMessageStanzas:", {Value::array({text, image})});
  send(connection, "internalSendDeliveryReceiptsForStanzas:", {Value::array({image})});
  send(connection, "sendMessage:", {makeOutgoingMessage(rt, "m1", "34622@s.whatsapp.net", "yo", 0, 1.0)});
  EXPECT_EQ(hostLog().delivered, std::vector<Strings>{Strings({"s1", "s2"})});
  EXPECT_EQ(hostLog().receipts, std::vector<Strings>{Strings({"s2"})});
  EXPECT_EQ(hostLog().sent, Strings{"m1"});

  EXPECT_FALSE(send(text, "hasMedia").boolValue());
  EXPECT_TRUE(send(image, "hasMedia").boolValue());
  EXPECT_EQ(send(image, "mediaType").intValue(), 1);
  EXPECT_EQ(send(send(image, "media"), "value"), Value::data({0xFF, 0xD8}));
  EXPECT_EQ(send(image, "valueForKey:", {Value::string(host::T("timestamp"))}).timeIntervalSince1970(),
            1400000000.25);
  EXPECT_TRUE(send(image, "valueForKey:", {Value::string(host::T("text"))}).isNil());
}

TEST_F(SimHostTest, ActionSheetKeepsItsButtonsAndATapRunsTheHandler) {
  Value cell = makeCell(rt, std::nullopt, std::nullopt);
  send(rt.newObject("ChatListViewController"), "chatSessionCellShowMoreOptions:", {cell});
  EXPECT_TRUE(send(cell, "nameLabel").isNil());
  EXPECT_EQ(hostLog().optionsOpened, std::vector<OptString>{std::nullopt});

  int archived = 0;
  Value sheet = send(cls("WABlockBasedActionSheet"), "actionSheetWithTitle:",
                     {Value::string(host::T("Chat"))});
  send(sheet, "addButtonWithTitle:handler:",
       {Value::string(host::T("Archive")), Value::block([&] { ++archived; })});
  ASSERT_EQ(hostLog().sheets.size(), 1u);
  EXPECT_EQ(hostLog().sheets[0].title, "Chat");
  tapButton("Archive");
  EXPECT_EQ(archived, 1);
  EXPECT_THROW(tapButton("Add to Blacklist"), std::runtime_error);
}

TEST_F(SimHostTest, ChatStorageFindsAndDeletesOnlyExistingChats) {
  hostLog().chats = {"34600@s.whatsapp.net"};
  Value manager = send(cls("ChatManager"), "sharedManager");
  ASSERT_TRUE(manager.isSameObject(send(cls("ChatManager"), "sharedManager")));
  Value storage = send(manager, "storage");
  Value jid = Value::string(host::T("34600@s.whatsapp.net"));
  EXPECT_TRUE(send(storage, "existingChatSessionForJID:", {Value::string(host::T("34699@s"))}).isNil());
  Value chat = send(storage, "existingChatSessionForJID:", {jid});
  EXPECT_EQ(send(chat, "jid"), jid);

  send(storage, "deleteChatSession:", {send(storage, "chatSessionForJID:", {jid})});
  send(manager, "refreshChats");
  EXPECT_TRUE(hostLog().chats.empty());
  EXPECT_EQ(hostLog().refreshes, 1);
  EXPECT_TRUE(send(storage, "existingChatSessionForJID:", {jid}).isNil());
}

TEST_F(SimHostTest, SpringBoardShowsBulletinsAndKeepsBadges) {
  Value whatsapp = addApplication(rt, "net.whatsapp.WhatsApp", Value::integer(2));
  addApplication(rt, "com.apple.MobileSMS", Value());
  Value controller = send(cls("SBApplicationController"), "sharedInstance");
  Value found = send(controller, "applicationsWithBundleIdentifier:",
                     {Value::string(host::T("net.whatsapp.WhatsApp"))});
  ASSERT_NE(found.array(), nullptr);
  ASSERT_EQ(found.array()->size(), 1u);
  EXPECT_TRUE(found.array()->at(0).isSameObject(whatsapp));
  EXPECT_TRUE(send(controller, "applicationsWithBundleIdentifier:",
                   {Value::string(host::T("com.example"))}).array()->empty());

  send(whatsapp, "setBadge:", {Value::integer(3)});
  EXPECT_EQ(send(whatsapp, "badgeNumberOrString"), Value::integer(3));
  EXPECT_EQ(hostLog().badges.at("net.whatsapp.WhatsApp"), Value::integer(3));

  Value bulletin = makeBulletin(rt, "net.whatsapp.WhatsApp", Value::dictionary({}), "Ann: hi");
  send(rt.newObject("SBLockScreenNotificationListController"), "observer:addBulletin:forFeed:",
       {Value(), bulletin, Value::integer(0)});
  ASSERT_EQ(hostLog().shown["lockscreen"].size(), 1u);
  EXPECT_TRUE(hostLog().shown["lockscreen"][0].isSameObject(bulletin));
  EXPECT_TRUE(hostLog().shown["banner"].empty());
  EXPECT_EQ(send(bulletin, "message"), Value::string(host::T("Ann: hi")));
}

}  // namespace
}  // namespace hushwall::simhost
