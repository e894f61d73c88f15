// hushwall-sim end to end: real app processes with the library loaded, a
// real bus and a real database, driven by the scenario files of
// sim/scenarios/ (which objchost/both_devices_test.cpp also plays on the
// Objective-C device).
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "sim/sim_run.h"

namespace hushwall::sim {
namespace {

using nlohmann::json;

const std::string kSpammer = "4917012345";
const std::string kCarol = "4930555002";
const std::string kBobJid = "4930555001@s.whatsapp.net";
const std::string kPrefix = "com.Corvanta.HushwallSettings.";
constexpr double kT = 1400000000;

SimResult play(const SimRun& sim, const std::string& scenario) {
  return sim.playFile(std::string(HUSHWALL_SCENARIOS_DIR) + "/" + scenario + ".json");
}

std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(HushwallSim, PlaysTheWalkThroughOfABlockedMessageAcrossBothProcesses) {
  SimRun sim;
  SimResult result = play(sim, "walk-through");
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  const json& state = result.state;

  EXPECT_EQ(state["whatsapp"]["receipts"], json::array({json::array({"m1", "m3"})}));
  EXPECT_EQ(state["whatsapp"]["delivered"], json::array({json::array({"m2"})}))
      << "blocked stanzas never reach WhatsApp";
  EXPECT_EQ(state["springboard"]["statusBar"], json::array({"HSWL"}));
  EXPECT_EQ(state["springboard"]["shown"]["banner"], json::array());
  EXPECT_TRUE(state["springboard"]["badge"].is_null()) << "a blocked notification never raises the badge";
  EXPECT_EQ(state["device"]["vibrations"], 2);
  EXPECT_EQ(state["device"]["notifications"],
            json::array({kPrefix + "addStatusBarIcon", kPrefix + "newMessagedAdded",
                         kPrefix + "newMessagedAdded"}));

  const std::string picture = "/var/mobile/Library/Preferences/Hushwall/" + kSpammer + "/" + kSpammer +
                              "-1400000000.000000.png";
  EXPECT_EQ(state["files"], json::array({picture}));
  EXPECT_EQ(slurp(sim.deviceRoot() + picture), std::string("\x00\x01\x02\xff", 4));
  const json& history = state["database"]["History"];
  ASSERT_EQ(history.size(), 3u);
  EXPECT_EQ(history[0]["phoneNumber"], kSpammer);
  EXPECT_EQ(history[0]["message"], "Buy now");
  EXPECT_EQ(history[0]["mediaType"], 0);
  EXPECT_EQ(history[1]["mediaFileName"], picture);
  EXPECT_EQ(history[1]["mediaURL"], "https://m/1");
  EXPECT_EQ(history[2]["blockType"], 2);
  EXPECT_EQ(history[2]["message"], "hello again");
  EXPECT_EQ(history[2]["date"], kT + 10);
  EXPECT_NE(result.output.find("springboard status bar shows HSWL"), std::string::npos) << result.output;
}

TEST(HushwallSim, ASenderAddressThatClimbsOutOfTheDataDirectoryLosesOnlyItsPicture) {
  SimRun sim;
  SimResult result = play(sim, "climbing-address");
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.state["whatsapp"]["receipts"], json::array({json::array({"m1"})})) << "still blocked";
  ASSERT_EQ(result.state["database"]["History"].size(), 1u) << "the history row is written all the same";
  EXPECT_EQ(result.state["database"]["History"][0]["phoneNumber"], "../../../../../../../../../escape/4917");
  EXPECT_EQ(result.state["files"], json::array());
  EXPECT_FALSE(std::filesystem::exists(sim.file("escape")));
  EXPECT_FALSE(std::filesystem::exists(sim.deviceRoot() + "/escape"));
  EXPECT_FALSE(std::filesystem::exists(sim.deviceRoot() + "/var/mobile/Library/Preferences/escape"));
}

TEST(HushwallSim, ABlacklistChangeMadeInWhatsAppReachesSpringBoard) {
  SimRun sim;
  SimResult result = play(sim, "chat-list-action");
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  const json& state = result.state;

  EXPECT_EQ(state["whatsapp"]["sheets"], json::array({json::array({"Add to Blacklist"})}));
  EXPECT_EQ(state["whatsapp"]["alerts"],
            json::array({{{"title", "Hushwall"}, {"message", "Would you like to blacklist Carol (" + kCarol + ") ?"},
                   {"buttons", {"No", "Yes"}}}}));
  EXPECT_EQ(state["database"]["Blacklist"],
            json::array({{{"id", 1}, {"name", "Carol"}, {"phoneNumber", kCarol}}}));
  EXPECT_EQ(state["whatsapp"]["blacklistNumbers"], json::array({kCarol}));
  EXPECT_EQ(state["springboard"]["blacklistNumbers"], json::array({kCarol}));
  const json& banners = state["springboard"]["shown"]["banner"];
  ASSERT_EQ(banners.size(), 1u) << "the second banner comes after the change and is dropped";
  EXPECT_EQ(banners[0]["message"], "Carol: one");
  EXPECT_EQ(state["springboard"]["badge"], 1);
  // The dropped local banner is recorded only with the icon setting on.
  EXPECT_EQ(state["device"]["notifications"], json::array({kPrefix + "contactsChanged"}));
}

// The companion's steps run the settings bundle's own logic: its changes
// reach both running apps through the announcement alone.
TEST(HushwallSim, TheSettingsBundlesBlacklistChangesReachBothRunningApps) {
  SimRun sim;
  SimResult result = play(sim, "companion-blacklist");
  ASSERT_EQ(result.exitCode, 0) << result.errors << result.output;
  const json& state = result.state;
  EXPECT_EQ(state["whatsapp"]["delivered"], json::array({json::array({"c1"}), json::array({"s1"})}));
  EXPECT_EQ(state["whatsapp"]["receipts"], json::array({json::array({"c2"})}));
  EXPECT_EQ(state["whatsapp"]["blacklistNumbers"], json::array({kCarol}));
  EXPECT_EQ(state["springboard"]["blacklistNumbers"], json::array({kCarol}));
  const json& banners = state["springboard"]["shown"]["banner"];
  ASSERT_EQ(banners.size(), 1u) << "Carol's banner is dropped, the spammer's is shown";
  EXPECT_EQ(banners[0]["message"], "Spammer: buy");
  EXPECT_EQ(state["database"]["Blacklist"],
            json::array({{{"id", 2}, {"name", "Carol"}, {"phoneNumber", kCarol}}}));
  EXPECT_EQ(state["device"]["notifications"],
            json::array({kPrefix + "contactsChanged", kPrefix + "newMessagedAdded",
                         kPrefix + "contactsChanged"}));
}

TEST(HushwallSim, SpringBoardSeedsTheDatabaseAndRestartedAppsReadItAfresh) {
  SimRun sim;
  SimResult result = play(sim, "restarts");
  ASSERT_EQ(result.exitCode, 0) << result.errors << result.output;
  const json& state = result.state;

  EXPECT_EQ(state["whatsapp"]["chats"], json::array({kBobJid})) << "the purge at termination took the spammer's chat";
  EXPECT_EQ(state["whatsapp"]["receipts"], json::array({json::array({"b1"})})) << "the restarted app read the blacklist at start";
  EXPECT_EQ(state["whatsapp"]["delivered"], json::array());
  EXPECT_EQ(state["whatsapp"]["blacklistNumbers"], json::array({kSpammer, "4930555001"}));
  EXPECT_EQ(state["database"]["History"].size(), 1u);
  EXPECT_EQ(state["springboard"]["statusBar"], json::array()) << "no icon at SpringBoard's launch";
  EXPECT_EQ(state["springboard"]["flags"]["ShowStatusbarIcon"], true);
  EXPECT_EQ(state["springboard"]["blacklistNumbers"], json::array({kSpammer, "4930555001"}));
  EXPECT_EQ(state["crashes"], json::array());
  const std::string& out = result.output;
  auto exits = out.find("whatsapp    exits"), shown = out.find("status bar shows HSWL");
  ASSERT_NE(exits, std::string::npos) << out;
  EXPECT_NE(out.find("whatsapp    started", exits), std::string::npos) << out;
  EXPECT_NE(shown, std::string::npos) << "the icon was shown before SpringBoard restarted\n" << out;
}

// The blacklist is stored as written: rows the settings bundle would refuse
// are rows a phone's table may hold all the same.
TEST(HushwallSim, AProcessKilledByTheRangeFailureIsReportedAndRestarted) {
  SimRun sim;
  SimResult result = play(sim, "range-failure");
  const json blacklist = {{{"name", "Spammer"}, {"phoneNumber", kSpammer}},
                          {{"name", "empty"}, {"phoneNumber", ""}},
                          {{"name", "quote"}, {"phoneNumber", "12'3"}},
                          {{"name", "again"}, {"phoneNumber", kSpammer}}};
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.state["crashes"],
            json::array({{{"process", "springboard"}, {"step", 1}, {"kind", "bulletin"}}}));
  const json& banners = result.state["springboard"]["shown"]["banner"];
  ASSERT_EQ(banners.size(), 1u) << "the restarted SpringBoard goes on with the next step";
  EXPECT_EQ(banners[0]["message"], "Bob: hi");
  EXPECT_EQ(result.state["springboard"]["flags"]["Enabled"], true);
  for (std::size_t i = 0; i < blacklist.size(); ++i) {
    json row = blacklist[i];
    row["id"] = i + 1;
    EXPECT_EQ(result.state["database"]["Blacklist"][i], row);
  }
  EXPECT_NE(result.output.find("RangeException"), std::string::npos) << result.output;
  EXPECT_NE(result.output.find("springboard restarted by the device"), std::string::npos);
}

TEST(HushwallSim, ReplaysOfTheDemoEndInTheSameState) {
  SimRun first, second;
  SimResult one = first.playFile(HUSHWALL_DEMO_SCENARIO);
  SimResult two = second.playFile(HUSHWALL_DEMO_SCENARIO);
  ASSERT_EQ(one.exitCode, 0) << one.errors;
  ASSERT_EQ(two.exitCode, 0) << two.errors;
  EXPECT_EQ(one.state, two.state);
  EXPECT_FALSE(one.state["database"]["History"].empty());
}

}  // namespace
}  // namespace hushwall::sim
