#include "tools/settings_assignments.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace hushwall::tools {
namespace {

std::optional<bool> parseBoolean(std::string word) {
  std::transform(word.begin(), word.end(), word.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (word == "true" || word == "yes" || word == "1") return true;
  if (word == "false" || word == "no" || word == "0") return false;
  return std::nullopt;
}

std::string knownKeys() {
  std::string list;
  for (const auto& key : settingsKeys()) list += (list.empty() ? "" : ", ") + key;
  return list;
}

}  // namespace

const std::vector<std::string>& settingsKeys() {
  static const std::vector<std::string> keys = {"Enabled",      "SaveHistory",  "ShowStatusbarIcon",
                                                "Vibrate",      "ContactsOnly", "LockSettings",
                                                "DeleteMessages", "ActionButton"};
  return keys;
}

host::Dict parseSettingsAssignments(const std::vector<std::string>& words) {
  host::Dict entries;
  for (const auto& word : words) {
    std::size_t eq = word.find('=');
    if (eq == std::string::npos) {
      throw std::invalid_argument("expected KEY=VALUE, got '" + word + "'");
    }
    std::string key = word.substr(0, eq);
    std::string value = word.substr(eq + 1);
    const auto& keys = settingsKeys();
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
      throw std::invalid_argument("unknown settings key '" + key + "' (known keys: " +
                                  knownKeys() + ")");
    }
    std::optional<bool> flag = parseBoolean(value);
    if (!flag) {
      throw std::invalid_argument("bad value '" + value + "' for " + key +
                                  " (use true/false, yes/no or 1/0)");
    }
    entries[host::T(key)] = host::Value::boolean(*flag);
  }
  return entries;
}

nlohmann::json settingsValueToJson(const host::Value& value) {
  using Kind = host::Value::Kind;
  switch (value.kind()) {
    case Kind::kBoolean: return value.boolValue();
    case Kind::kInteger: return static_cast<std::int64_t>(value.doubleValue());
    case Kind::kReal: return value.doubleValue();
    case Kind::kString: return host::toUtf8(*value.text());
    case Kind::kDate: return value.timeIntervalSince1970();
    case Kind::kData: return value.bytes()->size();
    case Kind::kArray: {
      nlohmann::json items = nlohmann::json::array();
      for (const auto& item : *value.array()) items.push_back(settingsValueToJson(item));
      return items;
    }
    case Kind::kDictionary: {
      nlohmann::json entries = nlohmann::json::object();
      for (const auto& [key, item] : *value.dictionary()) {
        entries[host::toUtf8(key)] = settingsValueToJson(item);
      }
      return entries;
    }
    default: return nullptr;
  }
}

}  // namespace hushwall::tools
