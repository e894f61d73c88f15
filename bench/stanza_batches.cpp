#include "bench/stanza_batches.h"

#include "simhost/whatsapp_classes.h"

namespace hushwall::bench {
namespace {

constexpr int kBlockedSenders = 10;
// Present-day times; each stanza a second after the one before.
constexpr double kFirstTimestamp = 1700000000.0;

// Blocked senders are 34612001000 .. 34612001009, each covered by its entry
// 612001000 .. 612001009. Ordinary senders are 34699 followed by six digits,
// which cannot hold a nine-digit entry that begins with 6.
std::string blockedNumber(long k) { return "3461200100" + std::to_string(k % kBlockedSenders); }
std::string passedNumber(long k) { return "34699" + std::to_string(100000 + k % 900000); }

}  // namespace

std::vector<std::string> blockedSenderEntries() {
  std::vector<std::string> entries;
  for (int k = 0; k < kBlockedSenders; ++k) entries.push_back("61200100" + std::to_string(k));
  return entries;
}

IncomingBatch makeIncomingBatch(WhatsAppUnderTest& whatsapp, int size, int blockedEvery) {
  auto& runtime = whatsapp.app().runtime();
  host::Array all, passed, blocked;
  IncomingBatch batch;
  for (int i = 0; i < size; ++i) {
    const long serial = whatsapp.nextSerial();
    const bool isBlocked = i % blockedEvery == 0;
    const std::string number = isBlocked ? blockedNumber(serial) : passedNumber(serial);
    const std::string name = "Contact " + number.substr(number.size() - 3);
    const std::string text = "Hello, this is message " + std::to_string(serial);
    const double timestamp = kFirstTimestamp + static_cast<double>(serial);
    host::Value stanza = simhost::makeStanza(runtime, "m" + std::to_string(serial),
                                             number + "@s.whatsapp.net", text, name, timestamp);
    all.push_back(stanza);
    if (isBlocked) {
      blocked.push_back(stanza);
      batch.blockedTexts.push_back({number, name, text, timestamp});
    } else {
      passed.push_back(stanza);
    }
  }
  batch.all = host::Value::array(std::move(all));
  batch.passed = host::Value::array(std::move(passed));
  batch.blocked = host::Value::array(std::move(blocked));
  return batch;
}

}  // namespace hushwall::bench
