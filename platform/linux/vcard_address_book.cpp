#include "platform/linux/vcard_address_book.h"

#include <phonenumbers/phonenumberutil.h>

#include <sys/stat.h>

#include <cctype>
#include <stdexcept>

#include "platform/linux/atomic_file.h"

namespace hushwall::linux_platform {
namespace {

using i18n::phonenumbers::PhoneNumberUtil;

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::toupper(static_cast<unsigned char>(a[i])) !=
        std::toupper(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

std::string_view trimmed(std::string_view s) {
  std::size_t begin = s.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  return s.substr(begin, s.find_last_not_of(" \t") - begin + 1);
}

// Physical lines joined into logical ones: a line that starts with a blank or
// a tab continues the one before it, less that one character.
std::vector<std::string> unfoldedLines(std::string_view text) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);  // a UTF-8 byte-order mark
  std::vector<std::string> lines;
  while (!text.empty()) {
    std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (!line.empty() && (line[0] == ' ' || line[0] == '\t') && !lines.empty()) {
      lines.back().append(line.substr(1));
    } else {
      lines.emplace_back(line);
    }
  }
  return lines;
}

// The name of a content line ("TEL" in "item1.TEL;TYPE=CELL:...") and its
// value. The name part ends at the first colon outside a quoted parameter.
bool splitProperty(std::string_view line, std::string_view* name, std::string_view* value) {
  bool quoted = false;
  std::size_t colon = 0;
  for (; colon < line.size(); ++colon) {
    if (line[colon] == '"') quoted = !quoted;
    else if (line[colon] == ':' && !quoted) break;
  }
  if (colon == line.size()) return false;
  std::string_view head = line.substr(0, colon);
  head = head.substr(0, head.find(';'));
  std::size_t dot = head.rfind('.');
  *name = dot == std::string_view::npos ? head : head.substr(dot + 1);
  *value = line.substr(colon + 1);
  return true;
}

}  // namespace

std::vector<std::string> phoneNumbersInVCards(std::string_view text) {
  std::vector<std::string> numbers;
  bool inCard = false;
  for (const std::string& line : unfoldedLines(text)) {
    std::string_view name, value;
    if (!splitProperty(line, &name, &value)) continue;
    name = trimmed(name);
    bool aboutACard = equalsIgnoringCase(trimmed(value), "VCARD");
    if (aboutACard && equalsIgnoringCase(name, "BEGIN")) {
      inCard = true;
    } else if (aboutACard && equalsIgnoringCase(name, "END")) {
      inCard = false;
    } else if (inCard && equalsIgnoringCase(name, "TEL")) {
      numbers.emplace_back(trimmed(value));
    }
  }
  return numbers;
}

VCardAddressBook::VCardAddressBook(DeviceRootFileSystem& files, std::string devicePath)
    : files_(files), path_(std::move(devicePath)) {}

const std::vector<std::string>& VCardAddressBook::storedNumbers() {
  const DeviceRoot* root = files_.deviceRoot();
  Fd file = root != nullptr ? root->open(path_, kReadFlags) : Fd();
  struct stat st {};
  if (!file || ::fstat(file.get(), &st) != 0 || !S_ISREG(st.st_mode) ||
      static_cast<std::uint64_t>(st.st_size) > kMaxContactsFileBytes) {
    version_.reset();
    numbers_.clear();
    return numbers_;
  }
  const Version now{st.st_dev, st.st_ino, st.st_size, st.st_mtim.tv_sec, st.st_mtim.tv_nsec};
  if (version_ && *version_ == now) return numbers_;
  try {
    numbers_ = phoneNumbersInVCards(readRegularFile(file.get(), path_, kMaxContactsFileBytes));
    version_ = now;
  } catch (const DeviceFileError&) {
    version_.reset();
    numbers_.clear();
  }
  return numbers_;
}

bool VCardAddressBook::hasPersonMatchingPhoneNumber(const host::OptText& number) {
  if (!number) return false;
  const std::string asked = host::toUtf8(*number);
  const PhoneNumberUtil& util = *PhoneNumberUtil::GetInstance();
  for (const std::string& stored : storedNumbers()) {
    switch (util.IsNumberMatchWithTwoStrings(stored, asked)) {
      case PhoneNumberUtil::EXACT_MATCH:
      case PhoneNumberUtil::NSN_MATCH:
      case PhoneNumberUtil::SHORT_NSN_MATCH:
        return true;
      default:
        break;
    }
  }
  return false;
}

std::string contactsVCardText(const std::vector<std::string>& phoneNumbers) {
  std::string text;
  for (std::size_t i = 0; i < phoneNumbers.size(); ++i) {
    const std::string& number = phoneNumbers[i];
    if (number.find_first_of("\r\n") != std::string::npos) {
      throw std::invalid_argument("a phone number for the address book holds a line break");
    }
    std::string name = "Contact " + std::to_string(i + 1);
    text += "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:" + name + "\r\nN:;" + name +
            ";;;\r\nTEL;TYPE=CELL:" + number + "\r\nEND:VCARD\r\n";
  }
  return text;
}

void writeContactsVCard(const std::string& nativePath, const std::vector<std::string>& phoneNumbers) {
  writeFileAtomically(nativePath, contactsVCardText(phoneNumbers));
}

}  // namespace hushwall::linux_platform
