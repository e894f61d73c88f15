// The incoming message filter: the messenger's connection hands over each
// batch of received stanzas here. Stanzas from blacklisted senders are
// acknowledged to the sender (delivery receipts) but never reach the
// messenger, so no chat, badge or sound appears for them; the rest go on to
// the messenger untouched and in their order.
#include <cstdint>
#include <optional>

#include "host/env.h"
#include "host/system_sounds.h"
#include "host/value.h"
#include "messenger/hooks.h"
#include "messenger/host_messages.h"
#include "model/hushwall.h"
#include "startup/notification_names.h"
#include "startup/settings.h"

namespace hushwall {

host::IMP original_processIncomingMessageStanzas = nullptr;

namespace {

using host::Value;

// The messenger's kind number for a picture. Pictures are the only
// attachments the history can show, so every other kind is left out of it.
constexpr std::int32_t kImageMediaType = 1;

// A history record as addHistoryWithArray: reads it, built pair by pair in a
// fixed order. Like a dictionary made from a nil-terminated list of objects
// and keys, it stops taking pairs at the first absent value: a stanza without
// a nickname yields a record with the phone number alone. The history has
// always been written from records cut short this way, so they stay so.
class RecordBuilder {
 public:
  RecordBuilder& add(const char* key, const Value& value) {
    if (stopped_ || value.isNil()) {
      stopped_ = true;
      return *this;
    }
    entries_.emplace(host::T(key), value);
    return *this;
  }
  Value build() const { return Value::dictionary(entries_); }

 private:
  host::Dict entries_;
  bool stopped_ = false;
};

Value historyRecord(const host::OptText& number, const Value& nickname, const Value& text,
                    double seconds, bool isImage, const host::Text& fileName,
                    const host::OptText& mediaURL) {
  return RecordBuilder()
      .add("phoneNumber", Value::string(number))
      .add("name", nickname)
      .add("message", text)
      // Passed as a single-precision number, which rounds present-day times
      // to 128 s. The duplicate test and the settings bundle's list have only
      // ever seen batch rows with that rounding, so it is not widened.
      .add("timestamp", Value::real(static_cast<float>(seconds)))
      // Not "blockType": the reader looks that key up and so stores these
      // rows with block type 0. Every existing history holds them that way
      // and the settings bundle shows them accordingly; fixing the key here
      // would make old and new rows of the same kind look different.
      .add("blockType:kBLOCK_TYPE_APP", Value::integer(kBLOCK_TYPE_APP))
      .add("isMine", Value::boolean(false))
      .add("mediaType", Value::integer(isImage ? kImageMediaType : 0))
      .add("mediaFileName", Value::string(fileName))
      .add("mediaURL", Value::string(mediaURL))
      .build();
}

}  // namespace

Value hook_processIncomingMessageStanzas(const Value& self, const host::Selector& cmd,
                                         const host::Args& args) {
  // Switched off: the messenger gets the very batch it handed over, as if
  // nothing were installed.
  if (!settings_Enabled) return original_processIncomingMessageStanzas(self, cmd, args);

  Hushwall* model = Hushwall::sharedInstance();
  host::Array blockedStanzas;
  host::Array passedStanzas;
  host::Array historyRecords;
  // These two outlive the stanza that set them and are cleared only when a
  // record is added. So one non-picture attachment silences the rest of its
  // batch, a picture after a repeated text is not recorded, and the final
  // vibration test sees what the last stanzas left behind. The filter has
  // always behaved so (a burst that repeats or carries a voice note buzzes
  // less, and records less), and the carry-over is kept as it is.
  bool duplicateSeen = false;
  bool mediaSkipped = false;

  // Held for the whole batch: the pointers below point into values, and a
  // value converted from a host object lives only as long as its holder.
  const Value batch = argumentAt(args, 0);
  const host::Array* stanzas = batch.array();
  if (stanzas != nullptr) {
    for (const Value& stanza : *stanzas) {
      host::OptText number = model->getPhoneNumber(valueForKey(stanza, "fromJID").text());
      if (!model->phoneNumberBlacklisted(number)) {
        passedStanzas.push_back(stanza);
        continue;
      }

      bool hasMedia = sendTo(stanza, "hasMedia").boolValue();
      Value text = valueForKey(stanza, "text");
      Value nickname = valueForKey(stanza, "nickname");
      double seconds = valueForKey(stanza, "timestamp").timeIntervalSince1970();

      // Voice notes, videos, locations and the like: blocked, but neither
      // stored nor recorded.
      if (hasMedia && sendTo(stanza, "mediaType").intValue() != kImageMediaType) {
        mediaSkipped = true;
        blockedStanzas.push_back(stanza);
        continue;
      }

      host::Text fileName;
      host::OptText mediaURL = host::Text();
      if (hasMedia) {
        mediaURL = sendTo(stanza, "mediaURL").text();
        const Value media = sendTo(sendTo(stanza, "media"), "value");
        std::optional<host::Bytes> data;
        if (const host::Bytes* bytes = media.bytes()) data = *bytes;
        // Saved even with the history off: the picture folder is the user's
        // only copy of what a blocked contact sent, and it is cheap.
        fileName = model->saveImageOnDiskWithData(data, number);
      } else {
        // The messenger redelivers a batch it believes unacknowledged; the
        // test keeps such repeats out of the history.
        duplicateSeen = model->existMessage(text.text(), number, seconds);
      }

      if (!duplicateSeen && !mediaSkipped && settings_SaveHistory) {
        historyRecords.push_back(
            historyRecord(number, nickname, text, seconds, hasMedia, fileName, mediaURL));
        duplicateSeen = false;
        mediaSkipped = false;
      }
      blockedStanzas.push_back(stanza);
    }
  }

  if (!blockedStanzas.empty()) {
    // Receipts go out for blocked messages too, so the sender cannot tell
    // that they were blocked, and the server stops redelivering them.
    sendTo(self, "internalSendDeliveryReceiptsForStanzas:", {Value::array(blockedStanzas)});
    if (!duplicateSeen && !mediaSkipped) {
      if (settings_Vibrate) host::env().systemSounds->play(host::kSystemSoundVibrate);
      // SpringBoard owns the status bar; the messenger can only ask.
      if (settings_ShowStatusBarIcon) {
        host::env().notifyCenter->post(kAddStatusBarIconNotification);
      }
    }
  }

  // One database write for the whole batch.
  if (!historyRecords.empty()) model->addHistoryWithArray(historyRecords);

  // A new array of what passed; a batch that was blocked whole does not reach
  // the messenger at all, not even as an empty batch.
  if (passedStanzas.empty()) return Value();
  host::Args forwarded = args;
  forwarded[0] = Value::array(std::move(passedStanzas));
  return original_processIncomingMessageStanzas(self, cmd, forwarded);
}

}  // namespace hushwall
