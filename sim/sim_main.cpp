// hushwall-sim: a simulated jailbroken device on which Hushwall runs as on a
// phone, with WhatsApp and SpringBoard as two processes that load the
// library at start and share only the device's files and notifications.
//
//   hushwall-sim run SCENARIO.json [--state STATE.json] [--root DIR] [--reply-limit S]
//                    [--device simulated|objc] [--firmware VERSION]
//   hushwall-sim demo [the same options]
//
// It prints a transcript of what each process saw and did, then writes the
// final state as JSON to STATE.json (or prints it). Without --root the
// device lives in a temporary directory that is removed at the end; with it,
// DIR (new or empty) keeps the device for a look afterwards. An app may take
// as long as it keeps working on a step; one that does no work for S seconds
// (30 by default) is given up on.
//
// --device objc plays the same device with the phone's code in it: each app
// is an Objective-C stand-in of WhatsApp or SpringBoard under GNUstep with
// the device adapter injected (objchost/objc_device_app.mm), SpringBoard's
// of the firmware --firmware names (7.0 to 8.4; the newest by default).
//
// Exit status: 0 played; 1 the device could not play it (a step that cannot
// be done, a process that would not start or answer), after writing the
// state it reached with the failure in it; 2 a bad command line or scenario,
// before anything is made.
#include <stdlib.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>

#include "objchost/springboard_firmware.h"
#include "sim/child_cleanup.h"
#include "sim/scenario.h"
#include "sim/simulation.h"
#include "sim/transcript.h"
#include "tools/command_line_checks.h"
#include "tools/device_root.h"
#include "platform/linux/sqlite_no_links.h"

namespace hushwall::sim {
namespace {

namespace fs = std::filesystem;

// The Objective-C device's firmware when --firmware names none.
constexpr char kNewestFirmware[] = "8.4";

// The device root: given (new or empty, kept) or temporary (removed).
class DeviceRoot {
 public:
  explicit DeviceRoot(const std::string& given) {
    if (given.empty()) {
      std::string pattern = (fs::temp_directory_path() / "hushwall-sim-XXXXXX").string();
      if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a device root in /tmp");
      // Canonical, as a given root is: the device's databases are opened
      // only by paths without a link (refuseLinkedDatabases).
      path_ = fs::canonical(pattern).string();
      temporary_ = true;
      return;
    }
    // Refused before anything is made: one that is not new or empty, or is
    // too long for the bus socket under it.
    path_ = tools::newDeviceRoot(given, false);
  }
  ~DeviceRoot() {
    std::error_code ignored;
    if (temporary_) fs::remove_all(path_, ignored);
  }
  const std::string& path() const { return path_; }
  bool temporary() const { return temporary_; }

 private:
  std::string path_;
  bool temporary_ = false;
};

// A companion file: beside this program when installed so, else where the
// build made it.
std::string companionFile(const std::string& name, const std::string& built) {
  std::error_code ec;
  fs::path beside = fs::read_symlink("/proc/self/exe", ec).parent_path() / name;
  return !ec && fs::exists(beside) ? beside.string() : built;
}

// The programs and library of the device asked for.
SimulationPaths devicePaths(const std::string& device, const std::string& firmware) {
  const std::string templateDatabase = companionFile("HSWL.db", HUSHWALL_TEMPLATE_DB);
  if (device == "simulated") {
    if (!firmware.empty()) throw std::invalid_argument("--firmware is for --device objc");
    const std::string app = companionFile("hushwall-app", HUSHWALL_APP_PATH);
    return {app, app, HUSHWALL_LIBRARY_PATH, templateDatabase, {}};
  }
  const std::string version = firmware.empty() ? kNewestFirmware : firmware;
  objchost::firmwareProfileFor(version);  // refuses a version outside the package's range
#ifdef HUSHWALL_DEVICE_LIBRARY_PATH
  return {HUSHWALL_OBJC_WHATSAPP_PATH, HUSHWALL_OBJC_SPRINGBOARD_PATH, HUSHWALL_DEVICE_LIBRARY_PATH,
          templateDatabase, {"--firmware", version}};
#else
  throw std::invalid_argument("this hushwall-sim was built without the Objective-C device (GNUstep)");
#endif
}

int play(const std::string& scenarioPath, const std::string& statePath, const std::string& rootPath,
         double replyLimitSeconds, const std::string& device, const std::string& firmware) {
  Scenario scenario;
  std::optional<DeviceRoot> root;
  SimulationPaths paths;
  try {
    paths = devicePaths(device, firmware);
    scenario = loadScenario(scenarioPath);
    root.emplace(rootPath);
  } catch (const ScenarioError& e) {
    std::cerr << "hushwall-sim: " << e.what() << "\n";
    return 2;
  } catch (const std::invalid_argument& e) {
    std::cerr << "hushwall-sim: " << e.what() << "\n";
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "hushwall-sim: " << e.what() << "\n";
    return 1;
  }
  try {
    Transcript transcript(std::cout);
    const std::string objc = " (the phone's adapter in Objective-C apps, firmware " +
                             (firmware.empty() ? std::string(kNewestFirmware) : firmware) + ")";
    transcript.heading("Hushwall on a simulated device" + (device == "objc" ? objc : "") + ": " + scenarioPath);
    transcript.heading("Device root: " + root->path() + (root->temporary() ? " (removed at the end)" : ""));
    const RunOutcome outcome = runScenario(scenario, root->path(), paths,
                                           static_cast<int>(replyLimitSeconds * 1000), transcript);
    const std::string title = outcome.failure ? "State when the run stopped" : "Final state";
    if (statePath.empty()) {
      std::cout << "\n" << title << ":\n" << outcome.state.dump(2) << "\n";
    } else {
      std::ofstream file(statePath);
      file << outcome.state.dump(2) << "\n";
      if (!file.flush()) throw std::runtime_error("cannot write the final state to " + statePath);
      std::cout << "\n" << title << " written to " << statePath << "\n";
    }
    if (outcome.failure) {
      std::cout.flush();
      std::cerr << "hushwall-sim: " << *outcome.failure << "\n";
      return 1;
    }
    return 0;
  } catch (const std::exception& e) {
    std::cout.flush();
    std::cerr << "hushwall-sim: " << e.what() << "\n";
    return 1;
  }
}

}  // namespace
}  // namespace hushwall::sim

int main(int argc, char** argv) {
  CLI::App cli{"hushwall-sim: Hushwall on a simulated device with WhatsApp and SpringBoard"};
  // No database of the device is opened through a link planted in it.
  hushwall::linux_platform::refuseLinkedDatabases();
  cli.require_subcommand(1);
  std::string scenario, state, root, device = "simulated", firmware;
  double replyLimit = hushwall::sim::kDefaultReplyIdleMs / 1000.0;
  CLI::App* run = cli.add_subcommand("run", "Play a scenario file");
  run->add_option("SCENARIO", scenario, "the scenario (JSON)")->required();
  CLI::App* demo = cli.add_subcommand("demo", "Play the demonstration scenario shipped with Hushwall");
  for (CLI::App* command : {run, demo}) {
    command->add_option("--state", state, "write the final state (JSON) to this file");
    command->add_option("--root", root, "keep the device in this new or empty directory");
    command->add_option("--reply-limit", replyLimit,
                        "give up on an app that does no work for this many seconds (default 30)")
        ->check(CLI::Range(0.1, 86400.0));
    command->add_option("--device", device, "simulated (hushwall-app) or objc (the phone's adapter)")
        ->check(CLI::IsMember({"simulated", "objc"}));
    command->add_option("--firmware", firmware, "with --device objc: the firmware, 7.0 to 8.4");
  }
  try {
    // The scenario's and the state file's names end up in the transcript and
    // the final state's JSON, which need text.
    hushwall::tools::requireUtf8Arguments(argc, argv);
  } catch (const std::invalid_argument& e) {
    std::cerr << "hushwall-sim: " << e.what() << "\n";
    return 2;
  }
  CLI11_PARSE(cli, argc, argv);
  hushwall::sim::installChildCleanup();
  return hushwall::sim::play(demo->parsed() ? HUSHWALL_DEMO_SCENARIO : scenario, state, root,
                             replyLimit, device, firmware);
}
