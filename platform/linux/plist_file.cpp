#include "platform/linux/plist_file.h"

#include <fcntl.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "platform/linux/atomic_file.h"
#include "platform/linux/device_root.h"
#include "platform/linux/plist_limits.h"

namespace hushwall::linux_platform {
namespace {

using host::Value;

// Property-list dates count from 2001-01-01 00:00 UTC.
constexpr double kSecondsFrom1970To2001 = 978307200.0;
// A property list this large is no settings file; it is refused unread.
constexpr std::size_t kMaxFileBytes = kMaxPlistBytes;

struct PlistFree {
  void operator()(void* node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<void, PlistFree>;

double secondsSince1970(plist_t date) {
  std::int32_t sec = 0, usec = 0;
  plist_get_date_val(date, &sec, &usec);
  // libplist truncates toward zero and hands back the fraction without its
  // sign, so a date before 2001 needs the sign put back. It offers no way to
  // tell the last second before 2001 from the first one after; that second is
  // read as the later one.
  double fraction = usec / 1e6;
  return kSecondsFrom1970To2001 + sec + (sec < 0 ? -fraction : fraction);
}

Value convert(plist_t node, std::size_t level) {
  if (level > kMaxPlistNesting) throw std::invalid_argument("property list nested too deeply");
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t b = 0;
      plist_get_bool_val(node, &b);
      return Value::boolean(b != 0);
    }
    case PLIST_UINT:
    case PLIST_UID: {
      std::uint64_t u = 0;
      if (plist_get_node_type(node) == PLIST_UID) plist_get_uid_val(node, &u);
      else plist_get_uint_val(node, &u);
      return Value::integer(static_cast<std::int64_t>(u));
    }
    case PLIST_REAL: {
      double d = 0;
      plist_get_real_val(node, &d);
      return Value::real(d);
    }
    case PLIST_STRING: {
      std::uint64_t length = 0;
      const char* s = plist_get_string_ptr(node, &length);
      return Value::string(host::fromUtf8(s ? std::string_view(s, length) : std::string_view()));
    }
    case PLIST_DATE:
      return Value::date(secondsSince1970(node));
    case PLIST_DATA: {
      std::uint64_t length = 0;
      auto* p = reinterpret_cast<const std::uint8_t*>(plist_get_data_ptr(node, &length));
      return Value::data(p ? host::Bytes(p, p + length) : host::Bytes());
    }
    case PLIST_ARRAY: {
      host::Array items;
      std::uint32_t n = plist_array_get_size(node);
      items.reserve(n);
      for (std::uint32_t i = 0; i < n; ++i) {
        items.push_back(convert(plist_array_get_item(node, i), level + 1));
      }
      return Value::array(std::move(items));
    }
    case PLIST_DICT: {
      host::Dict entries;
      plist_dict_iter it = nullptr;
      plist_dict_new_iter(node, &it);
      std::unique_ptr<void, void (*)(void*)> iterGuard(it, std::free);
      while (it) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, it, &key, &item);
        std::unique_ptr<char, void (*)(void*)> keyGuard(key, std::free);
        if (!item) break;
        entries.insert_or_assign(host::fromUtf8(std::string_view(key ? key : "")), convert(item, level + 1));
      }
      return Value::dictionary(std::move(entries));
    }
    default:
      return Value();
  }
}

// Value answers an integer only as a double and as its low 32 bits (the
// platform's doubleValue and intValue). Together they give all 64 bits back:
// the double is off by at most 2^10, far less than the 2^31 that would make
// the low bits ambiguous.
std::int64_t integerOf(const Value& v) {
  double d = v.doubleValue();
  const double kTop = 9223372036854774784.0;  // the largest double below 2^63
  std::int64_t approx = static_cast<std::int64_t>(std::fmax(-kTop, std::fmin(kTop, d)));
  std::uint64_t near = static_cast<std::uint64_t>(approx);
  std::uint64_t exact = (near & 0xFFFFFFFF00000000u) | static_cast<std::uint32_t>(v.intValue());
  auto diff = static_cast<std::int64_t>(exact - near);
  if (diff > (std::int64_t{1} << 31)) exact -= std::uint64_t{1} << 32;
  if (diff < -(std::int64_t{1} << 31)) exact += std::uint64_t{1} << 32;
  return static_cast<std::int64_t>(exact);
}

plist_t newDate(double since1970) {
  double since2001 = since1970 - kSecondsFrom1970To2001;
  double sec = std::floor(since2001);
  double usec = std::round((since2001 - sec) * 1e6);
  if (usec >= 1e6) {
    sec += 1;
    usec = 0;
  }
  if (!(sec >= std::numeric_limits<std::int32_t>::min() &&
        sec <= std::numeric_limits<std::int32_t>::max())) {
    throw std::invalid_argument("date outside the property-list range");
  }
  return plist_new_date(static_cast<std::int32_t>(sec), static_cast<std::int32_t>(usec));
}

using Encoder = void (*)(plist_t, char**, std::uint32_t*);

std::string encodePlist(const host::Dict& dict, Encoder encode, void (*release)(char*)) {
  PlistPtr root(plistFromValue(Value::dictionary(dict)));
  char* bytes = nullptr;
  std::uint32_t length = 0;
  encode(root.get(), &bytes, &length);
  if (!bytes) throw std::runtime_error("cannot encode the property list");
  std::unique_ptr<char, void (*)(char*)> guard(bytes, release);
  return std::string(bytes, length);
}

}  // namespace

host::Value valueFromPlist(plist_t node) {
  return node ? convert(node, 1) : Value();
}

std::optional<host::Dict> readPlistDictionary(const std::string& nativePath) {
  try {
    return plistDictionaryFromBytes(readRegularFileAt(AT_FDCWD, nativePath, kMaxFileBytes));
  } catch (const DeviceFileError&) {
    return std::nullopt;
  }
}

std::optional<host::Dict> plistDictionaryFromBytes(std::string bytes) {
  try {
    if (bytes.empty() || bytes.size() > kMaxFileBytes) return std::nullopt;
    if (!plistSafeToParse(bytes)) return std::nullopt;
    // Some zero bytes past the end: the XML parser peeks a few characters
    // ahead near the end of its input.
    std::size_t length = bytes.size();
    bytes.append(16, '\0');
    plist_t raw = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(length), &raw);
    PlistPtr root(raw);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT) return std::nullopt;
    Value value = valueFromPlist(root.get());
    return *value.dictionary();
  } catch (const std::exception&) {
    return std::nullopt;  // too deep, out of memory: the file is as good as unreadable
  }
}

plist_t plistFromValue(const host::Value& value) {
  switch (value.kind()) {
    case Value::Kind::kBoolean: return plist_new_bool(value.boolValue() ? 1 : 0);
    case Value::Kind::kInteger: return plist_new_uint(static_cast<std::uint64_t>(integerOf(value)));
    case Value::Kind::kReal: return plist_new_real(value.doubleValue());
    case Value::Kind::kString: return plist_new_string(host::toUtf8(*value.text()).c_str());
    case Value::Kind::kDate: return newDate(value.timeIntervalSince1970());
    case Value::Kind::kData: {
      const host::Bytes& b = *value.bytes();
      return plist_new_data(reinterpret_cast<const char*>(b.data()), b.size());
    }
    case Value::Kind::kArray: {
      PlistPtr array(plist_new_array());
      for (const Value& item : *value.array()) {
        plist_array_append_item(array.get(), plistFromValue(item));
      }
      return array.release();
    }
    case Value::Kind::kDictionary: {
      PlistPtr dict(plist_new_dict());
      for (const auto& [key, item] : *value.dictionary()) {
        plist_dict_set_item(dict.get(), host::toUtf8(key).c_str(), plistFromValue(item));
      }
      return dict.release();
    }
    default:
      throw std::invalid_argument("a nil, object or block value has no property-list form");
  }
}

std::string binaryPlistBytes(const host::Dict& dict) {
  return encodePlist(dict, plist_to_bin, plist_to_bin_free);
}

void writeBinaryPlist(const std::string& nativePath, const host::Dict& dict) {
  writeFileAtomically(nativePath, binaryPlistBytes(dict));
}

void writeXmlPlist(const std::string& nativePath, const host::Dict& dict) {
  writeFileAtomically(nativePath, encodePlist(dict, plist_to_xml, plist_to_xml_free));
}

}  // namespace hushwall::linux_platform
