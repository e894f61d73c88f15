#import "objchost/whatsapp_classes.h"

#include <Block.h>

#include <string>
#include <vector>

#include "objchost/objc_host_log.h"

namespace {

using hushwall::objchost::objcHostLog;
using hushwall::objchost::OptString;

OptString utf8(NSString* string) {
  if (string == nil) return std::nullopt;
  return std::string([string UTF8String]);
}

std::vector<std::string> idsOf(NSArray* stanzas) {
  std::vector<std::string> ids;
  for (XMPPMessageStanza* stanza in stanzas) ids.push_back(utf8([stanza stanzaID]).value_or(""));
  return ids;
}

}  // namespace

@implementation XMPPMediaElement
@synthesize value;
@end

@implementation XMPPMessageStanza
@synthesize stanzaID, fromJID, text, nickname, timestamp, hasMedia, mediaType, mediaURL, media;
@end

@implementation WAMessage
@synthesize messageID, toJID, text, messageDate, messageType;
@end

@implementation XMPPConnection
- (void)processIncomingMessageStanzas:(NSArray*)stanzas {
  objcHostLog().delivered.push_back(idsOf(stanzas));
  objcHostLog().lastBatch = stanzas;
}
- (void)internalSendDeliveryReceiptsForStanzas:(NSArray*)stanzas {
  objcHostLog().receipts.push_back(idsOf(stanzas));
}
- (void)sendMessage:(WAMessage*)message {
  objcHostLog().sent.push_back(utf8([message messageID]).value_or(""));
}
@end

@implementation WAChatSessionCell
@synthesize jid, nameLabel;
@end

@implementation ChatListViewController
- (void)chatSessionCellShowMoreOptions:(WAChatSessionCell*)cell {
  objcHostLog().optionsOpened.push_back(utf8([cell jid]));
}
@end

@implementation WABlockBasedActionSheet
+ (id)actionSheetWithTitle:(NSString*)title {
  objcHostLog().sheets.push_back({utf8(title), {}});
  return [[[WABlockBasedActionSheet alloc] init] autorelease];
}
- (void)addButtonWithTitle:(NSString*)title handler:(void (^)(void))handler {
  // The sheet keeps its handlers; the test taps the last sheet built.
  objcHostLog().sheets.back().second.push_back({utf8(title).value_or(""), Block_copy(handler)});
}
@end

@implementation WhatsAppAppDelegate
- (void)applicationDidEnterBackground:(id)application {
  ++objcHostLog().backgrounded;
}
- (void)applicationWillTerminate:(id)application {
  ++objcHostLog().terminated;
}
@end

@implementation WAChatSession
@synthesize jid;
@end

@implementation WAChatStorage
- (WAChatSession*)existingChatSessionForJID:(NSString*)jid {
  OptString key = utf8(jid);
  if (!key || objcHostLog().chats.count(*key) == 0) return nil;
  return [self chatSessionForJID:jid];
}
- (WAChatSession*)chatSessionForJID:(NSString*)jid {
  WAChatSession* session = [[[WAChatSession alloc] init] autorelease];
  [session setJid:jid];
  return session;
}
- (void)deleteChatSession:(WAChatSession*)session {
  if (OptString key = utf8([session jid])) objcHostLog().chats.erase(*key);
}
@end

@implementation ChatManager
+ (ChatManager*)sharedManager {
  static ChatManager* shared = nil;
  if (shared == nil) shared = [[ChatManager alloc] init];
  return shared;
}
- (id)init {
  if ((self = [super init]) != nil) storage = [[WAChatStorage alloc] init];
  return self;
}
- (WAChatStorage*)storage {
  return storage;
}
- (void)refreshChats {
  ++objcHostLog().refreshes;
}
@end
