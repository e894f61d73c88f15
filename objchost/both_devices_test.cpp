// Every scenario file of the repository played on both devices: the
// simulated one (libHushwall.so in hushwall-app) and the Objective-C one
// (the phone's adapter in the stand-in apps), on each firmware generation's
// SpringBoard.
// The final states must be equal but for the differences declared below,
// each with its reason, and each of those must show: a declared difference
// that no longer occurs is as wrong as one that is not declared.
// What the simulated device must end with is written beside the scenarios
// (expected/final-states.json): a JSON pointer into the final state and its
// value (a pointer to nothing reads as null), and under "transcript" texts
// the transcript shows in that order.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "objchost/springboard_firmware.h"
#include "sim/sim_run.h"

namespace hushwall::objchost {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

struct Difference {
  std::string scenario;  // the file's name
  std::string pointer;   // where in the final state (a JSON pointer); below it is allowed too
  std::string reason;
};

// Where the phone deliberately differs from the simulated device.
//
// A notification text that ends in its first colon makes the library's
// parsing fail on a range. The simulated SpringBoard has nothing around the
// library's code and crashes, as an unguarded tweak would, and the device
// restarts it with nothing shown; the adapter's exception barrier hands the
// call on to SpringBoard's own method instead, so SpringBoard lives on,
// shows that bulletin and keeps what it showed and counted before.
const std::string kBarrier = "the exception barrier keeps SpringBoard alive through the range failure";
const std::vector<Difference> kDeliberate = {
    {"demo.json", "/crashes", kBarrier},
    {"demo.json", "/springboard/shown", kBarrier},
    {"demo.json", "/springboard/badge", kBarrier},
    {"range-failure.json", "/crashes", kBarrier},
    {"range-failure.json", "/springboard/shown/banner", kBarrier},
};

bool under(const std::string& path, const std::string& pointer) {
  return path == pointer || path.rfind(pointer + "/", 0) == 0;
}

// Nothing of a device is written beside its root (a picture's path that
// climbs out, say).
void expectNothingBesideTheRoot(const sim::SimRun& run) {
  for (const auto& entry : fs::directory_iterator(fs::path(run.deviceRoot()).parent_path())) {
    const std::string name = entry.path().filename().string();
    EXPECT_TRUE(name == "device" || name == "out.txt" || name == "err.txt" || name == "state.json")
        << "written outside the device root: " << name;
  }
}

// The simulated device's result against what the scenario must end with.
void expectOutcome(const sim::SimResult& result, const json& expected) {
  for (const auto& [pointer, value] : expected.items()) {
    if (pointer == "transcript") continue;
    const json::json_pointer at(pointer);
    EXPECT_EQ(result.state.contains(at) ? result.state[at] : json(), value) << pointer;
  }
  std::size_t from = 0;
  for (const json& text : expected.value("transcript", json::array())) {
    from = result.output.find(text.get<std::string>(), from);
    EXPECT_NE(from, std::string::npos) << text << " (in this order)\n" << result.output;
  }
}

TEST(BothDevices, EveryScenarioFileEndsAlikeOnBothDevices) {
  json outcomes = json::parse(std::ifstream(std::string(HUSHWALL_SCENARIOS_DIR) + "/expected/final-states.json"));
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(HUSHWALL_SCENARIOS_DIR)) {
    if (entry.path().extension() == ".json") files.push_back(entry.path());
  }
  ASSERT_FALSE(files.empty());
  for (const fs::path& file : files) {
    const std::string name = file.filename().string();
    sim::SimRun simulated;
    sim::SimResult expected = simulated.playFile(file.string());
    ASSERT_EQ(expected.exitCode, 0) << name << "\n" << expected.errors;
    {
      SCOPED_TRACE(name + " on the simulated device");
      expectOutcome(expected, outcomes.value(name, json::object()));
      expectNothingBesideTheRoot(simulated);
      outcomes.erase(name);
    }
    for (std::size_t i = 0; i < kFirmwareProfileCount; ++i) {
      const std::string firmware = kFirmwareProfiles[i].version;
      SCOPED_TRACE(name + " on firmware " + firmware);
      sim::SimRun objc;
      sim::SimResult got = objc.playFile(file.string(), {"--device", "objc", "--firmware", firmware});
      ASSERT_EQ(got.exitCode, 0) << got.errors << "\n" << got.output;
      expectNothingBesideTheRoot(objc);
      std::set<std::string> seen;
      for (const json& change : json::diff(expected.state, got.state)) {
        const std::string path = change["path"].get<std::string>();
        bool declared = false;
        for (const Difference& d : kDeliberate) {
          if (d.scenario != name || !under(path, d.pointer)) continue;
          seen.insert(d.pointer);
          declared = true;
        }
        EXPECT_TRUE(declared) << "undeclared difference " << change.dump() << "\n"
                              << got.output;
      }
      for (const Difference& d : kDeliberate) {
        if (d.scenario != name) continue;
        EXPECT_EQ(seen.count(d.pointer), 1u) << "no longer differs: " << d.pointer << " (" << d.reason << ")";
      }
    }
  }
  EXPECT_EQ(outcomes, json::object()) << "outcomes of scenarios that are not there";
}

}  // namespace
}  // namespace hushwall::objchost
