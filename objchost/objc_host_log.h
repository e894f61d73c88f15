// What the Objective-C stand-ins of WhatsApp's and SpringBoard's classes
// received: each implementation writes here, so that what got past the
// tweak's hooks is visible. One log per process, as the apps' state is.
#ifndef HUSHWALL_OBJCHOST_OBJC_HOST_LOG_H_
#define HUSHWALL_OBJCHOST_OBJC_HOST_LOG_H_

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace hushwall::objchost {

using OptString = std::optional<std::string>;

struct SheetButton {
  std::string title;
  void (^handler)(void);  // a heap copy, kept for the life of the process
};

struct ObjcHostLog {
  // WhatsApp.
  std::vector<std::vector<std::string>> delivered;  // stanza ids per batch
  const void* lastBatch = nullptr;                  // the array object delivered last
  std::vector<std::vector<std::string>> receipts;
  std::vector<std::string> sent;
  std::vector<OptString> optionsOpened;
  std::vector<std::pair<OptString, std::vector<SheetButton>>> sheets;  // title, buttons
  int backgrounded = 0;
  int terminated = 0;
  std::set<std::string> chats;  // JIDs of the chats the messenger holds
  int refreshes = 0;

  // SpringBoard: each bulletin a controller was handed, with the very
  // objects and the feed it received.
  struct Shown {
    std::string where;  // "banner", "lockscreen", "notificationCenter"
    const void* observer;
    const void* bulletin;
    std::uint64_t feed;
    // Through the longer method (the lock screen from iOS 8.0, the banner
    // from 8.2): what came after the feed.
    bool withReply = false;
    bool playLightsAndSirens = false;
    const void* reply = nullptr;
  };
  std::vector<Shown> shown;
};

ObjcHostLog& objcHostLog();

}  // namespace hushwall::objchost

#endif  // HUSHWALL_OBJCHOST_OBJC_HOST_LOG_H_
