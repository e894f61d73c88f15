// Scenarios that cannot be played: hushwall-sim names the step, ends with a
// failure status and leaves nothing of the device running.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "sim/sim_run.h"

namespace hushwall::sim {
namespace {

using nlohmann::json;

bool somethingListensOn(const std::string& socketPath) {
  int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, socketPath.c_str(), sizeof(address.sun_path) - 1);
  bool listening = ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
  ::close(fd);
  return listening;
}

TEST(HushwallSimScenario, RejectsABadScenarioBeforeAnythingStarts) {
  struct Case {
    const char* what;
    std::string file;  // scenario text; empty: no file at all
    std::vector<std::string> message;
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
      {"missing file", "", {"cannot read the scenario file", "No such file"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    SimRun sim;
    std::filesystem::remove(sim.file("scenario.json"));
    if (!c.file.empty()) std::ofstream(sim.file("scenario.json")) << c.file;
    SimResult result = sim.playFile(sim.file("scenario.json"));
    EXPECT_EQ(result.exitCode, 2);
    for (const std::string& part : c.message) EXPECT_NE(result.errors.find(part), std::string::npos) << result.errors;
    EXPECT_TRUE(result.state.is_null());
    EXPECT_FALSE(std::filesystem::exists(sim.deviceRoot())) << "nothing is set up for a bad scenario";
  }
}

TEST(HushwallSimScenario, AStepThatCannotBePlayedStopsTheDeviceAndNamesTheStep) {
  struct Case {
    json steps;
    std::string message;
  };
  const std::vector<Case> cases = {
      {{{{"do", "background"}}, {{"do", "tap"}, {"button", "Add to Blacklist"}}},
       "step 2 (tap): no action sheet has been opened"},
      {{{{"do", "actionSheet"}, {"title", "t"}}, {{"do", "tap"}, {"button", "Add to Blacklist"}}},
       "step 2 (tap): the last action sheet has no button \"Add to Blacklist\" (it has none)"},
      {{{{"do", "answer"}, {"index", 1}}}, "step 1 (answer): no alert is on screen"},
      {{{{"do", "post"}, {"name", "nodot"}}}, "step 1 (post): notification name \"nodot\""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    SimRun sim;
    SimResult result = sim.play({{"steps", c.steps}});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.errors.find(c.message), std::string::npos) << result.errors;
    EXPECT_NE(result.output.find("whatsapp    started"), std::string::npos) << "the device did run";
    EXPECT_EQ(processesMentioning(sim.deviceRoot()), std::vector<pid_t>{})
        << "no app and no dbus-daemon of the device may be left";
    EXPECT_FALSE(somethingListensOn(sim.deviceRoot() + "/var/run/hushwall/bus.sock"));
  }
}

}  // namespace
}  // namespace hushwall::sim
