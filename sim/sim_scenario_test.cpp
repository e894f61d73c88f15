// The scenario loader's boundary: scenarios that cannot be played (and device
// roots too long for the bus) are refused before anything starts, naming the
// step; steps that fail on the device stop it and leave nothing of it running.
// (Nesting just inside the limit is played by sim/scenarios/deep-nesting.json.)
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/linux/device_bus_address.h"
#include "sim/sim_run.h"

namespace hushwall::sim {
namespace {

// `depth` times `open`, then `inner`, then `depth` times `close`.
std::string nested(std::size_t depth, const std::string& open, const std::string& inner,
                   const std::string& close) {
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += open;
  text += inner;
  for (std::size_t i = 0; i < depth; ++i) text += close;
  return text;
}

TEST(HushwallSimScenario, AScenarioThatCannotBePlayedIsRefusedNamingTheStepAndLeavesNothingRunning) {
  struct Case {
    const char* what;
    std::string file;  // scenario text; empty: no file at all
    std::vector<std::string> message;
    int exitCode = 2;  // 1: refused by the device, which did start
    std::string root = "device";
  };
  const std::vector<Case> cases = {
      {"unknown step", R"({"steps": [{"do": "background"}, {"do": "wave"}]})",
       {"step 2 (wave)", "unknown step kind \"wave\""}},
      {"wrong type", R"({"steps": [{"do": "answer", "index": "1"}]})",
       {"step 1 (answer)", "field \"index\" must be a whole number, not a string"}},
      {"wrong type inside", R"({"steps": [{"do": "tap", "button": "x"},
                                {"do": "incoming", "stanzas": [{"id": "a"}, {"timestamp": "now"}]}]})",
       {"step 2 (incoming): stanza 2", "\"timestamp\" must be a number"}},
      {"missing field", R"({"steps": [{"do": "restart"}]})", {"step 1 (restart)", "\"process\" is missing"}},
      {"bad choice", R"({"steps": [{"do": "restart", "process": "Safari"}]})",
       {"step 1 (restart)", "\"springboard\", \"whatsapp\""}},
      {"bad media", R"({"steps": [{"do": "incoming", "stanzas": [{"media": "not base64!"}]}]})",
       {"step 1 (incoming): stanza 1", "not base64"}},
      {"unknown field", R"({"steps": [{"do": "tap", "button": "x", "buton": "y"}]})",
       {"step 1 (tap)", "unknown field \"buton\""}},
      {"bad JSON", R"({"steps": [)", {"scenario.json", "not valid JSON"}},
      {"a number no double holds", R"({"steps": [{"do": "answer", "index": 1e400}]})",
       {"not valid JSON", "number overflow"}},
      {"invalid UTF-8 in a text", "{\"steps\": [{\"do\": \"tap\", \"button\": \"\xff\xfe\"}]}", {"not valid JSON"}},
      {"NUL, then junk", std::string("{\"steps\": []}\0{junk", 20), {"not valid JSON: a NUL byte at offset 13"}},
      {"settings nested 30,000 deep", R"({"settings": {"Enabled": true, "a": )" + nested(30000, "{\"a\": ", "true", "}") + "}}",
       {"scenario: nested more than 128 levels deep (at settings/a/a/a/...)"}},
      {"a document nested 200,000 deep", R"({"steps": [], "x": )" + nested(200000, "[", "1", "]") + "}",
       {"scenario: nested more than 128 levels deep (at x/0/0/0/...)"}},
      {"a bulletin context nested 20,000 deep",
       R"({"steps": [{"do": "background"}, {"do": "bulletin", "to": "banner", "bulletin": {"context": )" +
           nested(20000, "{\"c\": [", "1", "]}") + "}}]}",
       {"step 2 (bulletin): nested more than 128 levels deep (at bulletin/context/c/0/...)"}},
      {"NUL in a blacklist number", R"({"blacklist": [{"phoneNumber": "49\u000017"}]})",
       {"scenario: blacklist entry 1: field \"phoneNumber\" holds a NUL character"}},
      {"NUL in a settings key", R"({"settings": {"Enabled\u0000x": false}})",
       {"scenario: settings: the key \"Enabled...\" holds a NUL character"}},
      {"NUL in a settings step", R"({"steps": [{"do": "settings", "values": {"k": ["a\u0000"]}}]})",
       {"step 1 (settings): values/k/0: the text holds a NUL character"}},
      {"NUL in a contact", R"({"contacts": ["+49\u0000"]})", {"scenario: contact 1: the number holds a NUL"}},
      {"NUL in a message row", R"({"chatStorage": [{"ZTOJID": "1@s\u0000"}]})",
       {"scenario: chatStorage row 1: field \"ZTOJID\" holds a NUL"}},
      {"NUL in a blacklist step", R"({"steps": [{"do": "blacklistRemove", "phoneNumber": "4\u00009"}]})",
       {"step 1 (blacklistRemove): field \"phoneNumber\" holds a NUL"}},
      {"a malformed number in a blacklist step", R"({"steps": [{"do": "blacklistAdd", "phoneNumber": "x"}]})",
       {"step 1 (blacklistAdd): malformed phone number 'x'"}},
      {"a badge object that is no text", R"({"steps": [{"do": "badge", "bundleId": "b", "value": {"text": "7"}}]})",
       {"step 1 (badge): value: unknown field \"text\""}},
      {"a contact with a line break", R"({"contacts": ["+49 170\nEND:VCARD"]})",
       {"scenario: contact 1: the number holds a line break"}},
      {"a notification name that is none", R"({"steps": [{"do": "background"}, {"do": "post", "name": "nodot"}]})",
       {"step 2 (post): notification name \"nodot\" has no dot"}},
      {"a notification name with a NUL", R"({"steps": [{"do": "post", "name": "a.b\u0000c"}]})",
       {"step 1 (post): field \"name\" holds a NUL"}},
      {"missing file", "", {"cannot read the scenario file", "No such file"}},
      {"a root too long for the bus socket", R"({"steps": []})", {"device root too long for its bus socket"}, 2,
       std::string(90, 'r')},
      {"a tap without a sheet", R"({"steps": [{"do": "background"}, {"do": "tap", "button": "Add to Blacklist"}]})",
       {"step 2 (tap): no action sheet has been opened"}, 1},
      {"a tap on a button the sheet lacks",
       R"({"steps": [{"do": "actionSheet", "title": "t"}, {"do": "tap", "button": "Add to Blacklist"}]})",
       {"step 2 (tap): the last action sheet has no button \"Add to Blacklist\" (it has none)"}, 1},
      {"an answer without an alert", R"({"steps": [{"do": "answer", "index": 1}]})",
       {"step 1 (answer): no alert is on screen"}, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    SimRun sim(c.root);
    if (!c.file.empty()) std::ofstream(sim.file("scenario.json")) << c.file;
    SimResult result = sim.playFile(sim.file("scenario.json"));
    EXPECT_EQ(result.exitCode, c.exitCode);
    for (const std::string& part : c.message) EXPECT_NE(result.errors.find(part), std::string::npos) << result.errors;
    if (c.exitCode == 2) {
      EXPECT_TRUE(result.state.is_null());
      EXPECT_FALSE(std::filesystem::exists(sim.deviceRoot())) << "nothing is set up; a retry must be possible";
    } else {
      EXPECT_NE(result.output.find("whatsapp    started"), std::string::npos) << "the device did run";
      EXPECT_EQ(processesMentioning(sim.deviceRoot()), std::vector<pid_t>{})
          << "no app and no dbus-daemon of the device may be left";
      EXPECT_FALSE(linux_platform::deviceBusIsRunning(sim.deviceRoot()));
    }
  }
}

}  // namespace
}  // namespace hushwall::sim
