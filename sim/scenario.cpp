#include "sim/scenario.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>

#include "sim/json_values.h"

namespace hushwall::sim {
namespace {

using nlohmann::json;

enum Type : unsigned { kString = 1, kNumber = 2, kInteger = 4, kBoolean = 8, kObject = 16,
                       kArray = 32, kNull = 64 };

struct Field {
  const char* name;
  unsigned types;
  bool required = false;
};
using Fields = std::vector<Field>;

bool hasType(const json& value, unsigned types) {
  return ((types & kString) && value.is_string()) || ((types & kNumber) && value.is_number()) ||
         ((types & kInteger) && value.is_number_integer()) ||
         ((types & kBoolean) && value.is_boolean()) || ((types & kObject) && value.is_object()) ||
         ((types & kArray) && value.is_array()) || ((types & kNull) && value.is_null());
}

std::string typeOf(const json& value) {
  if (value.is_number_integer()) return "a whole number";
  if (value.is_number()) return "a number with a fraction";
  if (value.is_boolean()) return "true/false";
  if (value.is_null()) return "null";
  return std::string(value.is_string() ? "a string" : value.is_array() ? "an array" : "an object");
}

std::string expected(unsigned types) {
  static const std::pair<unsigned, const char*> kNames[] = {
      {kString, "a string"}, {kNumber, "a number"}, {kInteger, "a whole number"},
      {kBoolean, "true/false"}, {kObject, "an object"}, {kArray, "an array"}, {kNull, "null"}};
  std::string text;
  for (const auto& [type, name] : kNames) {
    if (types & type) text += (text.empty() ? "" : " or ") + std::string(name);
  }
  return text;
}

[[noreturn]] void fail(const std::string& where, const std::string& what) {
  throw ScenarioError(where + ": " + what);
}

// The object's keys must all be known and of their field's type.
void checkObject(const json& object, const Fields& fields, const std::string& where) {
  if (!object.is_object()) fail(where, "must be an object, not " + typeOf(object));
  for (const auto& [key, value] : object.items()) {
    const Field* field = nullptr;
    for (const Field& f : fields) field = key == f.name ? &f : field;
    if (field == nullptr) {
      std::string known;
      for (const Field& f : fields) known += (known.empty() ? "" : ", ") + std::string(f.name);
      fail(where, "unknown field \"" + key + "\" (known: " + known + ")");
    }
    if (!hasType(value, field->types)) {
      fail(where, "field \"" + key + "\" must be " + expected(field->types) + ", not " + typeOf(value));
    }
  }
  for (const Field& f : fields) {
    if (f.required && !object.contains(f.name)) fail(where, "field \"" + std::string(f.name) + "\" is missing");
  }
}

void checkEachObject(const json& array, const Fields& fields, const std::string& where,
                     const std::string& item) {
  for (std::size_t i = 0; i < array.size(); ++i) {
    checkObject(array[i], fields, where + ": " + item + " " + std::to_string(i + 1));
  }
}

void checkOneOf(const json& value, std::initializer_list<const char*> allowed, const std::string& where,
                const char* field) {
  std::string list;
  for (const char* a : allowed) {
    if (value == a) return;
    list += (list.empty() ? "\"" : ", \"") + std::string(a) + "\"";
  }
  fail(where, "field \"" + std::string(field) + "\" must be one of " + list);
}

// A settings value must have a property-list form: no null anywhere.
void checkPlistValue(const json& value, const std::string& where) {
  if (value.is_null()) fail(where, "has no property-list form (null)");
  if (value.is_structured()) {
    for (const auto& [key, item] : value.items()) checkPlistValue(item, where + "/" + key);
  }
}

const Fields kStanza = {{"id", kString}, {"fromJID", kString}, {"text", kString},
                        {"nickname", kString}, {"timestamp", kNumber}, {"hasMedia", kBoolean},
                        {"mediaType", kInteger}, {"mediaURL", kString}, {"media", kString}};
const Fields kMessage = {{"id", kString}, {"toJID", kString}, {"messageDate", kNumber},
                         {"text", kString}, {"messageType", kInteger}};
const Fields kCell = {{"jid", kString}, {"name", kString}};
const Fields kBulletin = {{"sectionID", kString}, {"message", kString}, {"context", kObject}};

// Each step kind's own fields, besides "do" and "at".
const std::map<std::string, Fields>& stepFields() {
  static const std::map<std::string, Fields> kinds = {
      {"incoming", {{"stanzas", kArray, true}}},
      {"send", {{"message", kObject, true}}},
      {"chatOptions", {{"cell", kObject, true}}},
      {"actionSheet", {{"title", kString}}},
      {"tap", {{"button", kString, true}}},
      {"answer", {{"index", kInteger, true}}},
      {"background", {}},
      {"terminate", {}},
      {"bulletin", {{"to", kString, true}, {"bulletin", kObject, true}}},
      {"badge", {{"bundleId", kString, true}, {"value", kNumber | kString | kNull, true}}},
      {"settings", {{"values", kObject, true}}},
      {"blacklistAdd", {{"phoneNumber", kString, true}, {"name", kString}}},
      {"blacklistRemove", {{"phoneNumber", kString, true}}},
      {"post", {{"name", kString, true}}},
      {"restart", {{"process", kString, true}}},
  };
  return kinds;
}

Step parseStep(const json& given, int number) {
  Step step{number, "", std::nullopt, given};
  const std::string where = "step " + std::to_string(number);
  if (!given.is_object()) fail(where, "must be an object, not " + typeOf(given));
  if (!given.contains("do")) fail(where, "field \"do\" is missing");
  if (!given["do"].is_string()) fail(where, "field \"do\" must be a string, not " + typeOf(given["do"]));
  step.kind = given["do"].get<std::string>();
  auto kind = stepFields().find(step.kind);
  if (kind == stepFields().end()) {
    std::string known;
    for (const auto& [name, fields] : stepFields()) known += (known.empty() ? "" : ", ") + name;
    fail(stepName(step), "unknown step kind \"" + step.kind + "\" (known: " + known + ")");
  }
  const std::string named = stepName(step);
  Fields fields = kind->second;
  fields.push_back({"do", kString, true});
  fields.push_back({"at", kNumber});
  fields.push_back({"note", kString});  // for the reader of the transcript
  checkObject(given, fields, named);
  if (given.contains("at")) step.at = given["at"].get<double>();

  if (step.kind == "incoming") {
    checkEachObject(given["stanzas"], kStanza, named, "stanza");
    for (std::size_t i = 0; i < given["stanzas"].size(); ++i) {
      const json& stanza = given["stanzas"][i];
      if (stanza.contains("media") && !decodeBase64(stanza["media"].get<std::string>())) {
        fail(named + ": stanza " + std::to_string(i + 1), "field \"media\" is not base64");
      }
    }
  }
  if (step.kind == "send") checkObject(given["message"], kMessage, named + ": message");
  if (step.kind == "chatOptions") checkObject(given["cell"], kCell, named + ": cell");
  if (step.kind == "bulletin") {
    checkOneOf(given["to"], {"banner", "lockscreen", "notificationCenter"}, named, "to");
    checkObject(given["bulletin"], kBulletin, named + ": bulletin");
  }
  if (step.kind == "restart") checkOneOf(given["process"], {"springboard", "whatsapp"}, named, "process");
  if (step.kind == "settings") checkPlistValue(given["values"], named + ": values");
  return step;
}

}  // namespace

std::string stepName(const Step& step) {
  return "step " + std::to_string(step.number) + " (" + step.kind + ")";
}

std::optional<std::string> appOfStep(const std::string& kind) {
  for (const char* k : {"incoming", "send", "chatOptions", "actionSheet", "tap", "answer",
                        "background", "terminate"}) {
    if (kind == k) return "whatsapp";
  }
  if (kind == "bulletin" || kind == "badge") return "springboard";
  return std::nullopt;
}

Scenario parseScenario(const json& document) {
  checkObject(document, {{"settings", kObject}, {"blacklist", kArray}, {"contacts", kArray},
                         {"chatStorage", kArray}, {"steps", kArray}},
              "scenario");
  Scenario scenario;
  if (document.contains("settings")) {
    checkPlistValue(document["settings"], "scenario: settings");
    scenario.settings = document["settings"];
  }
  if (document.contains("blacklist")) {
    checkEachObject(document["blacklist"], {{"name", kString}, {"phoneNumber", kString, true}},
                    "scenario", "blacklist entry");
    for (const json& row : document["blacklist"]) {
      scenario.blacklist.push_back({row.value("name", ""), row["phoneNumber"].get<std::string>()});
    }
  }
  if (document.contains("contacts")) {
    scenario.contacts.emplace();
    for (std::size_t i = 0; i < document["contacts"].size(); ++i) {
      const json& number = document["contacts"][i];
      if (!number.is_string()) {
        fail("scenario: contact " + std::to_string(i + 1), "must be a string, not " + typeOf(number));
      }
      scenario.contacts->push_back(number.get<std::string>());
    }
  }
  if (document.contains("chatStorage")) {
    checkEachObject(document["chatStorage"], {{"ZTOJID", kString | kNull}, {"ZFROMJID", kString | kNull}},
                    "scenario", "chatStorage row");
    scenario.chatStorage.emplace();
    for (const json& row : document["chatStorage"]) {
      auto jid = [&](const char* key) -> std::optional<std::string> {
        if (!row.contains(key) || row[key].is_null()) return std::nullopt;
        return row[key].get<std::string>();
      };
      scenario.chatStorage->push_back({jid("ZTOJID"), jid("ZFROMJID")});
    }
  }
  if (document.contains("steps")) {
    int number = 0;
    for (const json& step : document["steps"]) scenario.steps.push_back(parseStep(step, ++number));
  }
  return scenario;
}

Scenario loadScenario(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw ScenarioError("cannot read the scenario file " + path + ": " + std::strerror(errno));
  json document;
  try {
    document = json::parse(file);
  } catch (const json::parse_error& e) {
    throw ScenarioError(path + ": not valid JSON: " + e.what());
  }
  try {
    return parseScenario(document);
  } catch (const ScenarioError& e) {
    throw ScenarioError(path + ": " + e.what());
  }
}

}  // namespace hushwall::sim
