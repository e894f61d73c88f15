#include "sim/transcript.h"

#include <iomanip>
#include <sstream>

namespace hushwall::sim {
namespace {

using nlohmann::json;

std::string list(const json& ids) {
  std::string text;
  for (const auto& id : ids) text += (text.empty() ? "" : ", ") + id.get<std::string>();
  return text.empty() ? "(none)" : text;
}

std::string quoted(const json& value) {
  return value.is_string() ? "\"" + value.get<std::string>() + "\"" : value.dump();
}

std::string bulletinText(const json& bulletin) {
  return quoted(bulletin.value("message", json())) + " from " + bulletin.value("sectionID", "(no app)");
}

// What a step is about, for its heading.
std::string detail(const Step& step) {
  const json& b = step.body;
  if (step.kind == "incoming") {
    std::string text;
    for (const json& s : b["stanzas"]) {
      text += (text.empty() ? "" : "; ") + s.value("id", "?") + " from " + s.value("fromJID", "?");
      if (s.value("hasMedia", false)) text += " with media";
    }
    return text;
  }
  if (step.kind == "send") return b["message"].value("id", "?") + " to " + b["message"].value("toJID", "?");
  if (step.kind == "chatOptions") return "for " + b["cell"].value("jid", "(no jid)");
  if (step.kind == "actionSheet") return quoted(b.value("title", json()));
  if (step.kind == "tap") return quoted(b["button"]);
  if (step.kind == "answer") return "button " + b["index"].dump();
  if (step.kind == "bulletin") return b["to"].get<std::string>() + ": " + bulletinText(b["bulletin"]);
  if (step.kind == "badge") return b["bundleId"].get<std::string>() + " sets " + b["value"].dump();
  if (step.kind == "settings") return b["values"].dump();
  if (step.kind == "blacklistAdd" || step.kind == "blacklistRemove") return b["phoneNumber"].get<std::string>();
  if (step.kind == "post") return b["name"].get<std::string>();
  if (step.kind == "restart") return b["process"].get<std::string>();
  return "";
}

}  // namespace

std::string shortName(const std::string& notification) {
  return notification.substr(notification.rfind('.') + 1);
}

std::string describeHistoryRow(const json& row) {
  std::ostringstream text;
  text << row.value("phoneNumber", json()).dump() << " " << row.value("name", json()).dump() << ": "
       << row.value("message", json()).dump() << ", date " << std::fixed << std::setprecision(0)
       << row.value("date", 0.0) << ", blockType " << row.value("blockType", json()).dump()
       << (row.value("isMine", 0) == 1 ? ", the user's own" : "");
  if (row.value("mediaType", 0) == 1) text << ", picture " << row.value("mediaFileName", json()).dump();
  return text.str();
}

std::string describeBlacklistRow(const json& row) {
  return row.value("phoneNumber", json()).dump() + " " + row.value("name", json()).dump();
}

std::string describeEvent(const json& e) {
  const std::string kind = e.value("event", "");
  if (kind == "received") return "hears " + shortName(e["name"]);
  if (kind == "sound") return e["id"] == 4095 ? "vibrates" : "plays sound " + e["id"].dump();
  if (kind == "statusBar") {
    return std::string("status bar ") + (e["change"] == "add" ? "shows " : "hides ") +
           e["name"].get<std::string>();
  }
  if (kind == "alert") {
    std::string buttons;
    for (const auto& b : e["buttons"]) buttons += (buttons.empty() ? "" : " | ") + b.get<std::string>();
    return "shows alert " + quoted(e["title"]) + ": " + quoted(e["message"]) + " [" + buttons + "]";
  }
  if (kind == "delivered") return "messenger receives " + list(e["ids"]);
  if (kind == "receipts") return "delivery receipts sent for " + list(e["ids"]);
  if (kind == "sent") return "message " + e["id"].get<std::string>() + " sent";
  if (kind == "optionsOpened") return "chat options open for " + e["jid"].get<std::string>();
  if (kind == "sheet") {
    std::string buttons;
    for (const auto& b : e["buttons"]) buttons += (buttons.empty() ? "" : ", ") + quoted(b);
    return "action sheet " + quoted(e["title"]) +
           (buttons.empty() ? " with no button from Hushwall" : " with Hushwall's button " + buttons);
  }
  if (kind == "backgrounded") return "app delegate: did enter background";
  if (kind == "terminated") return "app delegate: will terminate";
  if (kind == "chatDeleted") return "chat " + e["jid"].get<std::string>() + " deleted";
  if (kind == "shown") return e["to"].get<std::string>() + " shows " + bulletinText(e["bulletin"]);
  if (kind == "withheld") return e["to"].get<std::string>() + " never gets " + bulletinText(e["bulletin"]);
  if (kind == "badge") return "icon badge of " + e["bundleId"].get<std::string>() + " now " + e["value"].dump();
  if (kind == "badgeRequest") {
    return e["bundleId"].get<std::string>() + " asks for badge " + e["requested"].dump() +
           ": icon shows " + e["shows"].dump() + (e["shows"] == e["requested"] ? "" : " (dropped)");
  }
  return "";
}

void Transcript::heading(const std::string& text) { out_ << text << "\n"; }

void Transcript::step(const Step& step) {
  out_ << "\n#" << step.number << " " << step.kind;
  std::string about = detail(step);
  if (!about.empty()) out_ << "  " << about;
  if (step.at) out_ << "  (at " << std::fixed << std::setprecision(0) << *step.at << ")";
  out_ << "\n";
  if (step.body.contains("note")) out_ << "  -- " << step.body["note"].get<std::string>() << "\n";
  out_.flush();  // someone watching a long step sees which one it is
}

void Transcript::say(const std::string& who, const std::string& text) {
  out_ << "  " << std::left << std::setw(12) << who << text << "\n";
}

void Transcript::events(const std::string& who, const json& events) {
  for (const json& event : events) {
    std::string line = describeEvent(event);
    if (!line.empty()) say(who, line);
  }
  out_.flush();
}

}  // namespace hushwall::sim
