#include "sim/scenario.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>

#include "companion/phone_number_rule.h"
#include "platform/linux/dbus_signal_name.h"
#include "platform/linux/plist_limits.h"
#include "sim/json_values.h"

namespace hushwall::sim {
namespace {

// What the loader accepts, the simulator must be able to convert and the
// apps to read back from the settings file.
static_assert(kMaxScenarioNesting < kMaxConvertedNesting);
static_assert(kMaxScenarioNesting < linux_platform::kMaxPlistNesting);

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

// Text the simulator writes into a file or a database itself (the settings
// file, the address book, the databases, a process's command line, a
// notification name) must hold no NUL character: the C interfaces it goes
// through end the text there, so "49\u000017" would be stored as "49". Texts
// handed to the apps' classes (stanzas, messages, cells, bulletins) may hold
// one, as the host's strings can on the phone; what the library makes of
// them is for the run to show.
void checkNoNul(const std::string& text, const std::string& where, const std::string& what) {
  if (text.find('\0') != std::string::npos) fail(where, what + " holds a NUL character (\\u0000)");
}

void checkNoNulIn(const json& object, std::initializer_list<const char*> fields,
                  const std::string& where) {
  for (const char* field : fields) {
    if (object.contains(field) && object[field].is_string()) {
      checkNoNul(object[field].get_ref<const std::string&>(), where,
                 "field \"" + std::string(field) + "\"");
    }
  }
}

// A settings value must have a property-list form: no null anywhere, and
// keys and strings without NUL (the property-list library ends them there,
// and aborts on a key that holds one). The loader has bounded the nesting
// already; the level is checked again so that this recursion can never run
// away on its own.
void checkPlistValue(const json& value, const std::string& where, std::size_t level = 1) {
  if (value.is_null()) fail(where, "has no property-list form (null)");
  if (value.is_string()) checkNoNul(value.get_ref<const std::string&>(), where, "the text");
  if (!value.is_structured()) return;
  if (level > kMaxScenarioNesting) fail(where, "is nested too deeply");
  for (const auto& [key, item] : value.items()) {
    checkNoNul(key, where, "the key \"" + key.substr(0, key.find('\0')) + "...\"");
    checkPlistValue(item, where + "/" + key, level + 1);
  }
}

// Where `document` nests containers more than `limit` deep: the keys (or
// indexes) from the document down to the first container too many. Walked
// with a stack of its own, since the document may be nested far deeper than
// the call stack could follow.
std::optional<std::vector<std::string>> placeDeeperThan(const json& document, std::size_t limit) {
  if (!document.is_structured()) return std::nullopt;
  struct Level {
    const json* container;
    json::const_iterator at;
    std::size_t index;
  };
  std::vector<Level> path = {{&document, document.cbegin(), 0}};
  while (!path.empty()) {
    Level& top = path.back();
    if (top.at == top.container->cend()) {
      path.pop_back();
      if (!path.empty()) ++path.back().at, ++path.back().index;
      continue;
    }
    const json& child = *top.at;
    if (!child.is_structured()) {
      ++top.at, ++top.index;
      continue;
    }
    if (path.size() >= limit) {
      std::vector<std::string> place;
      for (const Level& level : path) {
        place.push_back(level.container->is_object() ? level.at.key() : std::to_string(level.index));
      }
      return place;
    }
    path.push_back({&child, child.cbegin(), 0});
  }
  return std::nullopt;
}

// Refuses a document nested deeper than the loader takes, naming the step
// (or the part of the scenario) and where inside it the nesting goes on.
void checkNesting(const json& document) {
  auto place = placeDeeperThan(document, kMaxScenarioNesting);
  if (!place) return;
  std::string where = "scenario";
  std::size_t skip = 0;
  if (place->size() >= 2 && (*place)[0] == "steps") {
    const json& step = document["steps"][std::stoul((*place)[1])];
    where = "step " + std::to_string(std::stoul((*place)[1]) + 1);
    if (step.is_object() && step.contains("do") && step["do"].is_string()) {
      where += " (" + step["do"].get<std::string>() + ")";
    }
    skip = 2;
  }
  std::string inside;
  for (std::size_t i = skip; i < place->size() && i < skip + 4; ++i) inside += (*place)[i] + "/";
  if (place->size() > skip + 4) inside += ".../";
  fail(where, "nested more than " + std::to_string(kMaxScenarioNesting) + " levels deep" +
                  (inside.empty() ? std::string() : " (at " + inside.substr(0, inside.size() - 1) + ")"));
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
      {"badge", {{"bundleId", kString, true}, {"value", kNumber | kString | kNull | kObject, true}}},
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
  // A text of a subclass of the base string class: {"subclassText": "7"}.
  if (step.kind == "badge" && given["value"].is_object()) {
    checkObject(given["value"], {{"subclassText", kString, true}}, named + ": value");
  }
  if (step.kind == "restart") checkOneOf(given["process"], {"springboard", "whatsapp"}, named, "process");
  if (step.kind == "settings") checkPlistValue(given["values"], named + ": values");
  if (step.kind == "blacklistAdd" || step.kind == "blacklistRemove") {
    checkNoNulIn(given, {"phoneNumber", "name"}, named);
    // The companion applies the settings bundle's number rule; a number it
    // would refuse is refused here, before the device is made.
    if (auto problem = companion::phoneNumberProblem(given["phoneNumber"].get<std::string>())) {
      fail(named, *problem);
    }
  }
  if (step.kind == "post") {
    const std::string& name = given["name"].get_ref<const std::string&>();
    checkNoNul(name, named, "field \"name\"");
    try {
      linux_platform::signalNameOf(name);
    } catch (const std::invalid_argument& e) {
      fail(named, e.what());
    }
  }
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
  // Before anything copies or walks the document recursively.
  checkNesting(document);
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
    for (std::size_t i = 0; i < document["blacklist"].size(); ++i) {
      checkNoNulIn(document["blacklist"][i], {"name", "phoneNumber"},
                   "scenario: blacklist entry " + std::to_string(i + 1));
    }
    // The rows are stored as written, not added through the settings
    // bundle's rules: the table may hold what the chat-list action or another
    // program put there (an empty entry, a word, a number twice), and the
    // library must cope with that.
    for (const json& row : document["blacklist"]) {
      scenario.blacklist.push_back({row.value("name", ""), row["phoneNumber"].get<std::string>()});
    }
  }
  if (document.contains("contacts")) {
    scenario.contacts.emplace();
    for (std::size_t i = 0; i < document["contacts"].size(); ++i) {
      const json& number = document["contacts"][i];
      const std::string where = "scenario: contact " + std::to_string(i + 1);
      if (!number.is_string()) fail(where, "must be a string, not " + typeOf(number));
      checkNoNul(number.get_ref<const std::string&>(), where, "the number");
      // One line of the address book's vCard file holds one number.
      if (number.get_ref<const std::string&>().find_first_of("\r\n") != std::string::npos) {
        fail(where, "the number holds a line break");
      }
      scenario.contacts->push_back(number.get<std::string>());
    }
  }
  if (document.contains("chatStorage")) {
    checkEachObject(document["chatStorage"], {{"ZTOJID", kString | kNull}, {"ZFROMJID", kString | kNull}},
                    "scenario", "chatStorage row");
    for (std::size_t i = 0; i < document["chatStorage"].size(); ++i) {
      checkNoNulIn(document["chatStorage"][i], {"ZTOJID", "ZFROMJID"},
                   "scenario: chatStorage row " + std::to_string(i + 1));
    }
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

Scenario parseScenarioText(std::string_view text) {
  // JSON text holds no raw NUL, and the parser would take one for the end of
  // its input, accepting whatever junk follows.
  if (std::size_t nul = text.find('\0'); nul != std::string_view::npos) {
    throw ScenarioError("not valid JSON: a NUL byte at offset " + std::to_string(nul));
  }
  json document;
  try {
    document = json::parse(text);
  } catch (const json::exception& e) {
    // A syntax error, and also a number too large for a double (1e400),
    // which the parser reports as out of range.
    throw ScenarioError(std::string("not valid JSON: ") + e.what());
  }
  return parseScenario(document);
}

Scenario loadScenario(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw ScenarioError("cannot read the scenario file " + path + ": " + std::strerror(errno));
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad()) throw ScenarioError("cannot read the scenario file " + path + ": " + std::strerror(errno));
  try {
    return parseScenarioText(text);
  } catch (const ScenarioError& e) {
    throw ScenarioError(path + ": " + e.what());
  }
}

}  // namespace hushwall::sim
