// The device's processes and how long the simulator waits for them: a long
// step is waited for while its app works, an app that stops working is given
// up on with the state written, and nothing of a device outlives the
// simulator, however it ends. (A root too long for the bus socket is refused
// with the bad scenarios, sim_scenario_test.cpp.)
#include <signal.h>
#include <sys/wait.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "platform/linux/device_bus_address.h"
#include "sim/sim_run.h"

namespace hushwall::sim {
namespace {

using nlohmann::json;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

const std::string kSpammer = "4917012345";

// One step handing over `count` blocked text messages, each written to the
// history as a commit of its own: a second or more of work on a disk.
json blockedBatch(int count) {
  json stanzas = json::array();
  for (int i = 0; i < count; ++i) {
    stanzas.push_back({{"id", "m" + std::to_string(i)}, {"fromJID", kSpammer + "@s.whatsapp.net"},
                       {"text", "spam " + std::to_string(i)}, {"timestamp", 1400000000 + 200 * i}});
  }
  return {{"settings", {{"Enabled", true}, {"SaveHistory", true}}},
          {"blacklist", {{{"name", "Spammer"}, {"phoneNumber", kSpammer}}}},
          {"steps", {{{"do", "incoming"}, {"stanzas", stanzas}}}}};
}

// Waits until the transcript shows `text`; false after 30 s.
bool awaitOutput(const SimRun& sim, const std::string& text) {
  const auto deadline = Clock::now() + std::chrono::seconds(30);
  while (sim.output().find(text) == std::string::npos) {
    if (Clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

// Waits up to 10 s for every process of the device to be gone.
bool deviceGone(const SimRun& sim) {
  const auto deadline = Clock::now() + std::chrono::seconds(10);
  while (!processesMentioning(sim.deviceRoot()).empty() ||
         linux_platform::deviceBusIsRunning(sim.deviceRoot())) {
    if (Clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

TEST(HushwallSimLifetime, ALongStepIsWaitedForWhileItsAppWorks) {
  SimRun sim;
  const auto started = Clock::now();
  SimResult result = sim.finish(sim.start(blockedBatch(1000), {"--reply-limit", "0.2"}), 170);
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.state["database"]["History"].size(), 1000u);
  EXPECT_FALSE(result.state.contains("failure"));
  EXPECT_GT(Clock::now() - started, std::chrono::milliseconds(600))
      << "the step lasted several times the limit, or this proves nothing";
}

TEST(HushwallSimLifetime, AnAppThatStopsWorkingIsGivenUpOnAndTheStateIsWritten) {
  SimRun sim;
  pid_t simulator = sim.start(blockedBatch(200), {"--reply-limit", "1"});
  ASSERT_TRUE(awaitOutput(sim, "#1 incoming")) << sim.output();
  pid_t whatsapp = -1;
  for (pid_t pid : processesMentioning(std::string("--app\0whatsapp", 14))) {
    const std::vector<pid_t> ofThisDevice = processesMentioning(sim.deviceRoot());
    if (std::find(ofThisDevice.begin(), ofThisDevice.end(), pid) != ofThisDevice.end()) whatsapp = pid;
  }
  ASSERT_GT(whatsapp, 0);
  ::kill(whatsapp, SIGSTOP);  // alive, but it does nothing any more
  SimResult result = sim.finish(simulator);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.errors.find("whatsapp did not answer and did no work for 1"), std::string::npos)
      << result.errors;
  const json& failure = result.state["failure"];
  EXPECT_EQ(failure["step"], 1);
  EXPECT_EQ(failure["kind"], "incoming");
  EXPECT_TRUE(result.state["whatsapp"].is_null()) << "the stopped app was killed, not asked";
  EXPECT_EQ(result.state["springboard"]["flags"]["Enabled"], true) << "the other app still reports";
  EXPECT_LT(result.state["database"]["History"].size(), 200u);
  EXPECT_FALSE(fs::exists(sim.deviceRoot() + "/var/mobile/Library/Preferences/Hushwall/HSWL.db-journal"))
      << "the batch's hot journal was rolled back when the state was read";
  EXPECT_TRUE(deviceGone(sim));
}

TEST(HushwallSimLifetime, NothingOfTheDeviceOutlivesAKilledSimulator) {
  SimRun sim;
  pid_t simulator = sim.start(blockedBatch(200));
  ASSERT_TRUE(awaitOutput(sim, "#1 incoming")) << sim.output();
  ASSERT_EQ(processesMentioning(sim.deviceRoot()).size(), 4u) << "the simulator, its bus and two apps run";
  ::kill(simulator, SIGKILL);  // no handler and no destructor runs
  ::waitpid(simulator, nullptr, 0);
  EXPECT_TRUE(deviceGone(sim)) << "a bus left behind would take posts for a device without apps";
}

}  // namespace
}  // namespace hushwall::sim
