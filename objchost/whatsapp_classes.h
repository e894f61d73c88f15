// Objective-C stand-ins for the WhatsApp classes that Hushwall hooks or
// talks to, named as the messenger names them. Their own behaviour is
// reduced to what can be observed: each records what it received in
// objcHostLog(). Objects are read by the tweak with valueForKey: and the
// selectors below, exactly as in the messenger.
#ifndef HUSHWALL_OBJCHOST_WHATSAPP_CLASSES_H_
#define HUSHWALL_OBJCHOST_WHATSAPP_CLASSES_H_

#import <Foundation/Foundation.h>
#import <UIKit/UIKit.h>

@interface XMPPMediaElement : NSObject {
  NSData* value;
}
@property(nonatomic, retain) NSData* value;
@end

@interface XMPPMessageStanza : NSObject {
  NSString* stanzaID;
  NSString* fromJID;
  NSString* text;
  NSString* nickname;
  NSDate* timestamp;
  BOOL hasMedia;
  int mediaType;
  NSString* mediaURL;
  XMPPMediaElement* media;
}
@property(nonatomic, retain) NSString* stanzaID;
@property(nonatomic, retain) NSString* fromJID;
@property(nonatomic, retain) NSString* text;
@property(nonatomic, retain) NSString* nickname;
@property(nonatomic, retain) NSDate* timestamp;
@property(nonatomic, assign) BOOL hasMedia;
@property(nonatomic, assign) int mediaType;
@property(nonatomic, retain) NSString* mediaURL;
@property(nonatomic, retain) XMPPMediaElement* media;
@end

@interface WAMessage : NSObject {
  NSString* messageID;
  NSString* toJID;
  NSString* text;
  NSDate* messageDate;
  NSInteger messageType;
}
@property(nonatomic, retain) NSString* messageID;
@property(nonatomic, retain) NSString* toJID;
@property(nonatomic, retain) NSString* text;
@property(nonatomic, retain) NSDate* messageDate;
@property(nonatomic, assign) NSInteger messageType;
@end

@interface XMPPConnection : NSObject
- (void)processIncomingMessageStanzas:(NSArray*)stanzas;
- (void)internalSendDeliveryReceiptsForStanzas:(NSArray*)stanzas;
- (void)sendMessage:(WAMessage*)message;
@end

@interface WAChatSessionCell : NSObject {
  NSString* jid;
  UILabel* nameLabel;
}
@property(nonatomic, retain) NSString* jid;
@property(nonatomic, retain) UILabel* nameLabel;
@end

@interface ChatListViewController : NSObject
- (void)chatSessionCellShowMoreOptions:(WAChatSessionCell*)cell;
@end

@interface WABlockBasedActionSheet : NSObject
+ (id)actionSheetWithTitle:(NSString*)title;
- (void)addButtonWithTitle:(NSString*)title handler:(void (^)(void))handler;
@end

@interface WhatsAppAppDelegate : NSObject
- (void)applicationDidEnterBackground:(id)application;
- (void)applicationWillTerminate:(id)application;
@end

// The chats the messenger holds are the JIDs in objcHostLog().chats.
@interface WAChatSession : NSObject {
  NSString* jid;
}
@property(nonatomic, retain) NSString* jid;
@end

@interface WAChatStorage : NSObject
- (WAChatSession*)existingChatSessionForJID:(NSString*)jid;
- (WAChatSession*)chatSessionForJID:(NSString*)jid;
- (void)deleteChatSession:(WAChatSession*)session;
@end

@interface ChatManager : NSObject {
  WAChatStorage* storage;
}
+ (ChatManager*)sharedManager;
- (WAChatStorage*)storage;
- (void)refreshChats;
@end

#endif  // HUSHWALL_OBJCHOST_WHATSAPP_CLASSES_H_
