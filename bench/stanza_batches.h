// Incoming message stanzas as the messenger's connection hands them over:
// text messages from ordinary senders with some from blacklisted ones among
// them. Every text is new, so the duplicate test never finds one and each
// blocked message is recorded, which is the most work a batch can cause.
#ifndef HUSHWALL_BENCH_STANZA_BATCHES_H_
#define HUSHWALL_BENCH_STANZA_BATCHES_H_

#include <string>
#include <vector>

#include "bench/whatsapp_under_test.h"
#include "host/value.h"

namespace hushwall::bench {

// What the filter reads of a blocked stanza, in UTF-8.
struct BlockedText {
  std::string number;  // the phone number part of its JID
  std::string name;
  std::string text;
  double timestamp;
};

struct IncomingBatch {
  host::Value all;      // the batch in arrival order
  host::Value passed;   // the stanzas of senders not blacklisted, in order
  host::Value blocked;  // the others, in order
  std::vector<BlockedText> blockedTexts;
};

// The entries that cover the blacklisted senders of the batches below.
std::vector<std::string> blockedSenderEntries();

// `size` stanzas of which every `blockedEvery`-th (the first included) comes
// from a blacklisted sender.
IncomingBatch makeIncomingBatch(WhatsAppUnderTest& whatsapp, int size, int blockedEvery);

}  // namespace hushwall::bench

#endif  // HUSHWALL_BENCH_STANZA_BATCHES_H_
