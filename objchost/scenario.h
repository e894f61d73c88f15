// One scenario, two hosts. A test writes what the user and the servers do
// once, as a script against a driver; the script then runs in a simulated
// app that loads libHushwall.so and in an Objective-C app that loads the
// device adapter, each in a fresh process on a device of its own, and the
// two logs of what the host saw (and the two databases) must agree.
#ifndef HUSHWALL_OBJCHOST_SCENARIO_H_
#define HUSHWALL_OBJCHOST_SCENARIO_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/value.h"

namespace hushwall::objchost {

using OptString = std::optional<std::string>;

struct PictureInput {
  std::int64_t type = 1;  // 1 is a picture
  OptString url;
  std::vector<std::uint8_t> bytes;
};

struct StanzaInput {
  std::string id;
  OptString fromJID;
  OptString text;
  OptString nickname;
  std::optional<double> timestamp;
  std::optional<PictureInput> media;
};

struct OutgoingInput {
  std::string id;
  OptString toJID;
  OptString text;
  std::int64_t messageType = 0;
  double date = 0;
};

// What a script can make the messenger do. Every step logs what the
// messenger's own code received in consequence.
class WhatsAppDriver {
 public:
  virtual ~WhatsAppDriver() = default;
  // The connection hands a batch to processIncomingMessageStanzas:.
  virtual void deliver(const std::vector<StanzaInput>& batch) = 0;
  virtual void send(const OutgoingInput& message) = 0;
  // The user opens a chat's options, then the sheet is built.
  virtual void openOptions(const OptString& jid, const OptString& name) = 0;
  virtual void actionSheet(const std::string& title) = 0;
  // The user taps a button of the last sheet, then a button of the alert.
  virtual void tapSheetButton(const std::string& title) = 0;
  virtual void answerAlert(int index) = 0;
  // The messenger holds a chat with each of these JIDs.
  virtual void holdChats(const std::vector<std::string>& jids) = 0;
  // The app delegate hears that the app went to the background, or that
  // it is ending; logs what reached the delegate and the chats left.
  virtual void background() = 0;
  virtual void terminate() = 0;
  // Runs the main loop until the app's own notifications have come back,
  // and logs the vibrations and the notifications seen so far.
  virtual void settle() = 0;

  std::vector<std::string> log;
};

// The feed SpringBoard hands with every bulletin: above 2^31, so that an
// argument passed with the wrong width or sign arrives as another number.
inline constexpr std::uint32_t kFeed = 0xFEEDFACEu;

using Flags = std::vector<std::pair<std::string, bool>>;

// What a script can make SpringBoard do. Every step logs what SpringBoard's
// own code received in consequence and the messenger's badge after it.
class SpringBoardDriver {
 public:
  virtual ~SpringBoardDriver() = default;
  // A bulletin handed to the banner, the lock screen and the notification
  // centre, in that order, each with a new observer object and kFeed.
  virtual void deliver(const OptString& sectionID, const host::Value& context,
                       const OptString& message) = 0;
  // The messenger sets its own badge.
  virtual void messengerSetsBadge(const host::Value& badge) = 0;
  // A notification posted by a process outside the library; returns once
  // the process has handled it.
  virtual void postFromOutside(const std::string& name) = 0;
  // The settings bundle rewrites the settings file and announces it.
  virtual void changeSettings(const Flags& flags) = 0;
  // Logs vibrations, status-bar requests and the notifications posted.
  virtual void settle() = 0;

  std::vector<std::string> log;
};

// Where a WhatsApp driver's log has got to in its host's record of what
// the messenger's own code received. Both hosts' records (the simulated
// app's and this app's) have members of the same names.
struct WhatsAppLogCursor {
  std::size_t delivered = 0, receipts = 0, sent = 0, opened = 0;

  template <typename HostLog>
  void logNew(const HostLog& h, std::vector<std::string>& log);
  template <typename HostLog>
  static void logChats(const HostLog& h, std::vector<std::string>& log);
};

using WhatsAppScript = std::function<void(WhatsAppDriver&)>;
using SpringBoardScript = std::function<void(SpringBoardDriver&)>;

// A value as the logs write it: its kind and content.
std::string describe(const host::Value& value);
std::string joined(const std::vector<std::string>& items);

template <typename HostLog>
void WhatsAppLogCursor::logNew(const HostLog& h, std::vector<std::string>& log) {
  for (; delivered < h.delivered.size(); ++delivered) {
    log.push_back("delivered " + joined(h.delivered[delivered]));
  }
  for (; receipts < h.receipts.size(); ++receipts) {
    log.push_back("receipts " + joined(h.receipts[receipts]));
  }
  for (; sent < h.sent.size(); ++sent) log.push_back("sent " + h.sent[sent]);
  for (; opened < h.optionsOpened.size(); ++opened) {
    log.push_back("options opened " + h.optionsOpened[opened].value_or("(nil)"));
  }
}

template <typename HostLog>
void WhatsAppLogCursor::logChats(const HostLog& h, std::vector<std::string>& log) {
  log.push_back("chats " + joined(std::vector<std::string>(h.chats.begin(), h.chats.end())) + " refreshes " +
                std::to_string(h.refreshes) + " backgrounded " + std::to_string(h.backgrounded) +
                " terminated " + std::to_string(h.terminated));
}

}  // namespace hushwall::objchost

#endif  // HUSHWALL_OBJCHOST_SCENARIO_H_
