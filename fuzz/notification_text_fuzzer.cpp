// Messenger addresses and notification texts as arbitrary UTF-16: the input's
// bytes, two at a time (little-endian), are the code units, lone surrogates
// and all. The one failure allowed is the range exception of getMessage for
// a text whose first colon is its last code unit, and only for such a text.
#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_check.h"
#include "host/text.h"
#include "model/hushwall.h"

namespace {

using hushwall::host::Text;

bool trimmed(const Text& text) {
  return text.empty() ||
         (!hushwall::host::isWhiteSpace(text.front()) && !hushwall::host::isWhiteSpace(text.back()));
}

bool hasLoneSurrogate(const Text& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    char16_t u = text[i];
    bool high = u >= 0xD800 && u <= 0xDBFF, low = u >= 0xDC00 && u <= 0xDFFF;
    if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      ++i;
    } else if (high || low) {
      return true;
    }
  }
  return false;
}

void checkPhoneNumber(hushwall::Hushwall& model, const Text& text) {
  hushwall::host::OptText number = model.getPhoneNumber(text);
  HUSHWALL_FUZZ_CHECK(number.has_value(), "getPhoneNumber lost a present text");
  std::size_t at = text.find(u'@');
  if (at == Text::npos) {
    HUSHWALL_FUZZ_CHECK(*number == text, "an address without @ must come back untouched");
    return;
  }
  HUSHWALL_FUZZ_CHECK(trimmed(*number), "the number must be trimmed");
  HUSHWALL_FUZZ_CHECK(number->size() <= at, "the number lies before the first @");
  HUSHWALL_FUZZ_CHECK(text.substr(0, at).find(*number) != Text::npos,
                      "the number is a piece of what precedes the first @");
}

void checkMessage(hushwall::Hushwall& model, const Text& text) {
  std::size_t colon = text.find(u':');
  const bool colonLast = colon != Text::npos && colon + 1 == text.size();
  hushwall::host::OptText message;
  try {
    message = model.getMessage(text);
  } catch (const hushwall::host::RangeException&) {
    HUSHWALL_FUZZ_CHECK(colonLast, "range exception for a text whose first colon is not last");
    return;
  }
  HUSHWALL_FUZZ_CHECK(!colonLast, "a text ending in its first colon must raise");
  HUSHWALL_FUZZ_CHECK(message.has_value(), "getMessage lost a present text");
  if (colon == Text::npos) {
    HUSHWALL_FUZZ_CHECK(*message == text, "a text without a colon must come back untouched");
    return;
  }
  HUSHWALL_FUZZ_CHECK(trimmed(*message), "the message must be trimmed");
  HUSHWALL_FUZZ_CHECK(message->size() + colon + 2 <= text.size(),
                      "the message starts two units after the colon");
  HUSHWALL_FUZZ_CHECK(text.find(*message, colon + 2) != Text::npos,
                      "the message is a piece of the text after the colon");
}

void checkName(hushwall::Hushwall& model, const Text& text) {
  Text name = model.getName(text);
  HUSHWALL_FUZZ_CHECK(trimmed(name), "the name must be trimmed");
  std::size_t end = text.find(u':');
  if (end == Text::npos) end = text.find(u' ');
  if (end == Text::npos) {
    HUSHWALL_FUZZ_CHECK(name.empty(), "a text with neither colon nor blank has no name");
    return;
  }
  HUSHWALL_FUZZ_CHECK(name.size() <= end, "the name lies before its separator");
  HUSHWALL_FUZZ_CHECK(text.substr(0, end).find(name) != Text::npos,
                      "the name is a piece of what precedes its separator");
}

// Every text goes to SQLite and D-Bus as UTF-8 on its way out: lone
// surrogates become U+FFFD, everything else survives the round trip.
void checkUtf8(const Text& text) {
  Text back = hushwall::host::fromUtf8(hushwall::host::toUtf8(text));
  HUSHWALL_FUZZ_CHECK(!hasLoneSurrogate(back), "UTF-8 round trip left a lone surrogate");
  if (!hasLoneSurrogate(text)) {
    HUSHWALL_FUZZ_CHECK(back == text, "UTF-8 round trip changed a well-formed text");
  } else {
    HUSHWALL_FUZZ_CHECK(back.size() == text.size(), "each lone surrogate becomes one U+FFFD");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Text text;
  for (std::size_t i = 0; i + 1 < size; i += 2) {
    text.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
  }
  hushwall::Hushwall& model = *hushwall::Hushwall::sharedInstance();
  checkPhoneNumber(model, text);
  checkMessage(model, text);
  checkName(model, text);
  checkUtf8(text);
  // Absent texts: the answers of a message to nil, never a failure.
  HUSHWALL_FUZZ_CHECK(!model.getPhoneNumber(std::nullopt), "absent address gives absent number");
  HUSHWALL_FUZZ_CHECK(!model.getMessage(std::nullopt), "absent text gives absent message");
  HUSHWALL_FUZZ_CHECK(model.getName(std::nullopt).empty(), "absent text gives empty name");
  return 0;
}
