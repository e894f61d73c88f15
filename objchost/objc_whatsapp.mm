// The scenario's WhatsApp side in this Objective-C app, with the device
// adapter injected: real classes, real message sends.
#import "objchost/whatsapp_classes.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "objchost/objc_app.h"
#include "objchost/objc_host_log.h"
#include "objchost/two_hosts.h"
#include "platform/gnustep/stand_in_device.h"
#include "testing/child_process.h"

namespace hushwall::objchost {
namespace {

NSString* ns(const OptString& utf8) {
  return utf8 ? [NSString stringWithUTF8String:utf8->c_str()] : nil;
}

XMPPMessageStanza* stanzaOf(const StanzaInput& given) {
  XMPPMessageStanza* stanza = [[[XMPPMessageStanza alloc] init] autorelease];
  [stanza setStanzaID:ns(given.id)];
  [stanza setFromJID:ns(given.fromJID)];
  [stanza setText:ns(given.text)];
  [stanza setNickname:ns(given.nickname)];
  if (given.timestamp) [stanza setTimestamp:[NSDate dateWithTimeIntervalSince1970:*given.timestamp]];
  [stanza setHasMedia:given.media.has_value()];
  if (given.media) {
    [stanza setMediaType:(int)given.media->type];
    [stanza setMediaURL:ns(given.media->url)];
    XMPPMediaElement* media = [[[XMPPMediaElement alloc] init] autorelease];
    [media setValue:[NSData dataWithBytes:given.media->bytes.data() length:given.media->bytes.size()]];
    [stanza setMedia:media];
  }
  return stanza;
}

class ObjcWhatsApp : public WhatsAppDriver {
 public:
  explicit ObjcWhatsApp(DarwinCounter& posted) : posted_(posted) {
    connection_ = [[XMPPConnection alloc] init];
    chatList_ = [[ChatListViewController alloc] init];
    delegate_ = [[WhatsAppAppDelegate alloc] init];
  }

  void deliver(const std::vector<StanzaInput>& batch) override {
    NSMutableArray* stanzas = [NSMutableArray array];
    for (const StanzaInput& given : batch) [stanzas addObject:stanzaOf(given)];
    [connection_ processIncomingMessageStanzas:stanzas];
    logNew();
  }

  void send(const OutgoingInput& given) override {
    WAMessage* message = [[[WAMessage alloc] init] autorelease];
    [message setMessageID:ns(given.id)];
    [message setToJID:ns(given.toJID)];
    [message setText:ns(given.text)];
    [message setMessageType:(NSInteger)given.messageType];
    [message setMessageDate:[NSDate dateWithTimeIntervalSince1970:given.date]];
    [connection_ sendMessage:message];
    logNew();
  }

  void openOptions(const OptString& jid, const OptString& name) override {
    WAChatSessionCell* cell = [[[WAChatSessionCell alloc] init] autorelease];
    [cell setJid:ns(jid)];
    if (name) {
      UILabel* label = [[[UILabel alloc] init] autorelease];
      [label setText:ns(name)];
      [cell setNameLabel:label];
    }
    [chatList_ chatSessionCellShowMoreOptions:cell];
    logNew();
  }

  void actionSheet(const std::string& title) override {
    [WABlockBasedActionSheet actionSheetWithTitle:ns(title)];
    const auto& sheet = objcHostLog().sheets.back();
    std::vector<std::string> buttons;
    for (const auto& button : sheet.second) buttons.push_back(button.title);
    log.push_back("sheet " + sheet.first.value_or("(nil)") + " " + joined(buttons));
  }

  void tapSheetButton(const std::string& title) override {
    const auto& buttons = objcHostLog().sheets.back().second;
    for (const auto& button : buttons) {
      if (button.title == title) {
        button.handler();
        const gnustep::ShownAlert& alert = gnustep::shownAlerts().back();
        log.push_back("alert " + alert.title + " | " + alert.message + " | " +
                      joined(alert.buttons) + " | " + std::to_string(alert.tag));
        return;
      }
    }
    ADD_FAILURE() << "the last sheet has no button " << title;
  }

  void answerAlert(int index) override { gnustep::tapAlertButton(index); }

  void holdChats(const std::vector<std::string>& jids) override {
    objcHostLog().chats.insert(jids.begin(), jids.end());
  }

  void background() override {
    [delegate_ applicationDidEnterBackground:nil];
    WhatsAppLogCursor::logChats(objcHostLog(), log);
  }

  void terminate() override {
    [delegate_ applicationWillTerminate:nil];
    WhatsAppLogCursor::logChats(objcHostLog(), log);
  }

  void settle() override {
    EXPECT_TRUE(posted_.settle());
    int vibrations = 0;
    for (std::uint32_t sound : gnustep::playedSystemSounds()) vibrations += sound == 4095;
    log.push_back("vibrations " + std::to_string(vibrations));
    for (const std::string& name : kPostedNames) {
      log.push_back("posted " + name + " " + std::to_string(posted_.count(name)));
    }
  }

 private:
  void logNew() { cursor_.logNew(objcHostLog(), log); }

  DarwinCounter& posted_;
  XMPPConnection* connection_;
  ChatListViewController* chatList_;
  WhatsAppAppDelegate* delegate_;
  WhatsAppLogCursor cursor_;
};

}  // namespace

Log runObjcWhatsApp(const testing::TestDevice& device, const WhatsAppScript& script) {
  inObjcProcess([&] {
    // The app's identity is its bundle's, as on the phone.
    ASSERT_TRUE([[[NSBundle mainBundle] bundleIdentifier] isEqual:@"net.whatsapp.WhatsApp"]);
    gnustep::bootDevice(device.root());
    DarwinCounter posted(kPostedNames);
    injectTweak();
    ObjcWhatsApp driver(posted);
    script(driver);
    driver.settle();
    writeLog(device, "objc", driver.log);
  });
  return readLog(device, "objc");
}

}  // namespace hushwall::objchost
