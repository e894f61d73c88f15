#include "sim/json_values.h"

#include <cmath>

namespace hushwall::sim {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int sextet(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

host::Value valueAtLevel(const nlohmann::json& given, std::size_t level) {
  using Type = nlohmann::json::value_t;
  if (given.is_structured() && level > kMaxConvertedNesting) throw TooDeeplyNested();
  switch (given.type()) {
    case Type::boolean: return host::Value::boolean(given.get<bool>());
    case Type::number_integer:
      return host::Value::integer(given.get<std::int64_t>());
    case Type::number_unsigned:
      return host::Value::integer(static_cast<std::int64_t>(given.get<std::uint64_t>()));
    case Type::number_float: return host::Value::real(given.get<double>());
    case Type::string:
      return host::Value::string(host::T(given.get<std::string>()));
    case Type::array: {
      host::Array items;
      for (const auto& item : given) items.push_back(valueAtLevel(item, level + 1));
      return host::Value::array(std::move(items));
    }
    case Type::object: {
      host::Dict entries;
      for (const auto& [key, item] : given.items()) entries[host::T(key)] = valueAtLevel(item, level + 1);
      return host::Value::dictionary(std::move(entries));
    }
    default: return host::Value();
  }
}

nlohmann::json jsonAtLevel(const host::Value& value, std::size_t level) {
  using Kind = host::Value::Kind;
  const bool container = value.kind() == Kind::kArray || value.kind() == Kind::kDictionary;
  if (container && level > kMaxConvertedNesting) throw TooDeeplyNested();
  switch (value.kind()) {
    case Kind::kNil: return nullptr;
    case Kind::kBoolean: return value.boolValue();
    case Kind::kInteger: return static_cast<std::int64_t>(value.doubleValue());
    case Kind::kReal: return value.doubleValue();
    case Kind::kString: return host::toUtf8(*value.text());
    case Kind::kDate: return value.timeIntervalSince1970();
    case Kind::kData: return encodeBase64(*value.bytes());
    case Kind::kArray: {
      nlohmann::json items = nlohmann::json::array();
      for (const auto& item : *value.array()) items.push_back(jsonAtLevel(item, level + 1));
      return items;
    }
    case Kind::kDictionary: {
      nlohmann::json entries = nlohmann::json::object();
      for (const auto& [key, item] : *value.dictionary()) {
        entries[host::toUtf8(key)] = jsonAtLevel(item, level + 1);
      }
      return entries;
    }
    case Kind::kObject: return "<object>";
    case Kind::kBlock: return "<block>";
  }
  return nullptr;
}

}  // namespace

TooDeeplyNested::TooDeeplyNested()
    : std::invalid_argument("a value nested more than " + std::to_string(kMaxConvertedNesting) +
                            " levels deep") {}

host::Value valueFromJson(const nlohmann::json& given) { return valueAtLevel(given, 1); }

nlohmann::json jsonFromValue(const host::Value& value) { return jsonAtLevel(value, 1); }

std::optional<host::Bytes> decodeBase64(std::string_view text) {
  while (!text.empty() && text.back() == '=') text.remove_suffix(1);
  if (text.size() % 4 == 1) return std::nullopt;
  host::Bytes bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (char c : text) {
    int v = sextet(c);
    if (v < 0) return std::nullopt;
    bits = (bits << 6) | static_cast<std::uint32_t>(v);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes.push_back(static_cast<std::uint8_t>((bits >> count) & 0xFF));
    }
  }
  return bytes;
}

std::string encodeBase64(const host::Bytes& bytes) {
  std::string out;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t chunk = static_cast<std::uint32_t>(bytes[i]) << 16;
    if (i + 1 < bytes.size()) chunk |= static_cast<std::uint32_t>(bytes[i + 1]) << 8;
    if (i + 2 < bytes.size()) chunk |= bytes[i + 2];
    for (std::size_t k = 0; k < 4; ++k) {
      out += (i + k <= bytes.size()) ? kAlphabet[(chunk >> (18 - 6 * k)) & 0x3F] : '=';
    }
  }
  return out;
}

}  // namespace hushwall::sim
