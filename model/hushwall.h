// Hushwall: the one model object shared by every hook in a process. It holds
// the blacklist tests, the parsing of messenger addresses and notification
// texts, and the block history with its saved pictures.
//
// Strings that the host may leave absent are OptText; the answers for an
// absent argument are the platform's (a message to nil), and some of them
// are surprising on purpose: see the individual methods.
#ifndef HUSHWALL_MODEL_HUSHWALL_H_
#define HUSHWALL_MODEL_HUSHWALL_H_

#include <cstdint>
#include <optional>

#include "host/alerts.h"
#include "host/bulletin.h"
#include "host/text.h"
#include "host/value.h"

namespace hushwall {

// Where a message was blocked, as stored in History.blockType.
enum BlockType : std::int32_t {
  kBLOCK_TYPE_NONE = 0,
  kBLOCK_TYPE_APP = 1,
  kBLOCK_TYPE_NOTIFICATION = 2,
};

class Hushwall {
 public:
  // The process's one instance, made on first use and never released. A
  // plain null test, no lock: two threads racing on the first call may each
  // make one, and both behave the same.
  static Hushwall* sharedInstance();

  Hushwall* init();

  // --- Blacklist tests (in memory, never the database) -------------------

  // Removes "(", ")", "-", "+", ".", "/", U+00A0 and " ", one pass each, in
  // that order. Nothing else is touched.
  host::OptText unformattedPhoneNumber(const host::OptText& string);

  // YES when the number is to be blocked: some entry of blacklistNumbers
  // occurs in it, or, with settings_ContactsOnly on, no contact holds it.
  bool phoneNumberBlacklisted(const host::OptText& number);

  // YES when some entry of blacklistNumbers occurs in the number, whatever
  // the settings.
  bool existPhoneNumber(const host::OptText& number);

  // --- Parsing of messenger addresses and notification texts -------------

  // The part before the first "@", trimmed; the string itself, untouched,
  // when it has no "@".
  host::OptText getPhoneNumber(const host::OptText& jid);
  // The part from two positions after the first ":", trimmed; the string
  // itself when it has no ":". Raises host::RangeException when that colon
  // is the last character, and nothing catches it.
  host::OptText getMessage(const host::OptText& text);
  // The part before the first ":", else before the first " ", trimmed; ""
  // when there is neither.
  host::Text getName(const host::OptText& text);
  // YES when the bulletin is the messenger's and its sender is to be blocked.
  bool isBulletinBlocked(const host::Bulletin& bulletin);

  // --- Block history -------------------------------------------------------

  // YES when the newest History row for this number and message is dated
  // less than 120 s before `timestamp`, or after it.
  bool existMessage(const host::OptText& message, const host::OptText& phoneNumber,
                    double timestamp);
  // One record without media.
  void addHistoryWithPhoneNumber(const host::OptText& phoneNumber, const host::OptText& name,
                                 const host::OptText& message, double date,
                                 std::int32_t blockType, bool isMine);
  // One record.
  void addHistoryWithPhoneNumber(const host::OptText& phoneNumber, const host::OptText& name,
                                 const host::OptText& message, double date,
                                 std::int32_t blockType, bool isMine, std::int32_t mediaType,
                                 const host::OptText& mediaFileName,
                                 const host::OptText& mediaURL);
  // One record per dictionary, one statement per row, no transaction.
  void addHistoryWithArray(const host::Array& records);
  // Writes the bytes to <data dir>/NUMBER/NUMBER-SECONDS.png and returns the
  // path, whether or not the write worked.
  host::Text saveImageOnDiskWithData(const std::optional<host::Bytes>& data,
                                     const host::OptText& phoneNumber);

  // --- Status bar (meaningful inside SpringBoard only) ---------------------

  void addStatusBarIcon();
  void removeStatusBarIcon();

  // --- The chat list's confirmation alert ----------------------------------

  // The alert's delegate: carries out "Yes" on an add (tag 989898) or remove
  // (tag 979797) confirmation. Lives with the chat-list action.
  void alertView(const host::AlertView& alertView, std::intptr_t buttonIndex);

 private:
  Hushwall() = default;
  // Declared with the class and never read or written.
  bool _tempBlockBadge = false;
};

}  // namespace hushwall

#endif  // HUSHWALL_MODEL_HUSHWALL_H_
