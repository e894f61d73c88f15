// What the simulated apps' own code received: the stand-in implementations
// write here, so a test or the simulator can see what reached the host after
// Hushwall's hooks had their say (which stanzas were delivered, which sheet
// buttons exist, which bulletins were shown, which badges were set).
//
// The apps are one process each, so there is one log per process, as the
// apps' own state would be; tests start from a fresh one with
// `hostLog() = HostLog{}`.
#ifndef HUSHWALL_SIMHOST_HOST_LOG_H_
#define HUSHWALL_SIMHOST_HOST_LOG_H_

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/runtime.h"
#include "host/value.h"

namespace hushwall::simhost {

// An action sheet built by WABlockBasedActionSheet, with its buttons.
struct SheetRecord {
  host::Value sheet;                                          // the sheet object
  std::optional<std::string> title;
  std::vector<std::pair<std::string, host::Value>> buttons;  // title, handler block
};

struct HostLog {
  // WhatsApp.
  std::vector<std::vector<std::string>> delivered;  // stanza ids per processIncomingMessageStanzas:
  std::vector<std::vector<std::string>> receipts;   // per internalSendDeliveryReceiptsForStanzas:
  std::vector<std::string> sent;                    // message ids reaching sendMessage:
  std::vector<std::optional<std::string>> optionsOpened;  // cell JIDs
  int backgrounded = 0;
  int terminated = 0;
  std::set<std::string> chats;  // JIDs of the chats the messenger holds
  int refreshes = 0;
  std::vector<SheetRecord> sheets;

  // SpringBoard.
  std::map<std::string, std::vector<host::Value>> shown;  // "banner", "lockscreen", "notificationCenter"
  // The arguments of each bulletin that reached a controller through the
  // longer method of iOS 8.2 (observer, bulletin, feed, sounds, reply).
  std::vector<host::Args> shownWithReply;
  std::map<std::string, host::Value> badges;              // bundle id -> last badge set
};

HostLog& hostLog();

}  // namespace hushwall::simhost

#endif  // HUSHWALL_SIMHOST_HOST_LOG_H_
