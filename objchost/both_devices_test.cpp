// Every scenario file of the repository played on both devices: the
// simulated one (libHushwall.so in hushwall-app) and the Objective-C one
// (the phone's adapter in the stand-in apps), on each firmware generation's
// SpringBoard.
// The simulated device's final state must be the one kept beside the
// scenario in expected/ (written by `hushwall-sim run --state` and read
// through once by hand), and the Objective-C device's must equal it but for
// the differences declared below, each with its reason, and each of those
// must show: a declared difference that no longer occurs is as wrong as one
// that is not declared.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
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

TEST(BothDevices, EveryScenarioFileEndsAlikeOnBothDevices) {
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
    std::ifstream kept(file.parent_path() / "expected" / name);
    ASSERT_TRUE(kept) << "no expected state for " << name;
    const json diff = json::diff(json::parse(kept), expected.state);
    EXPECT_TRUE(diff.empty()) << name << " ends otherwise than expected: " << diff.dump(1) << "\n"
                              << expected.output;
    expectNothingBesideTheRoot(simulated);
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
  const fs::path keptStates = fs::path(HUSHWALL_SCENARIOS_DIR) / "expected";
  EXPECT_EQ(std::distance(fs::directory_iterator(keptStates), {}),
            static_cast<std::ptrdiff_t>(files.size()))
      << "an expected state in " << keptStates << " has no scenario";
}

}  // namespace
}  // namespace hushwall::objchost
