// The status-bar icon observers inside a simulated SpringBoard, driven by
// notifications posted from outside the library over the device's bus.
#include <gtest/gtest.h>

#include "simhost/test_device.h"
#include "simhost/test_springboard.h"
#include "testing/child_process.h"

namespace hushwall::testing {
namespace {

constexpr char kAdd[] = "com.Corvanta.HushwallSettings.addStatusBarIcon";
constexpr char kRemove[] = "com.Corvanta.HushwallSettings.removeStatusBarIcon";

TEST(StatusBarIcon, OutsideRequestsReachThePlatformEveryTimeWhateverTheFlag) {
  TestDevice device;
  device.installDatabase();
  // The icon flag is the posters' business, not the observers'.
  device.writeSettings(settingsFlags(true, true, false, false));
  runInChildProcess([&] {
    TestSpringBoard sb(device, HUSHWALL_LIBRARY_PATH);
    std::vector<std::string> requests;
    sb.app().device().statusBar().onChange = [&](const std::string& op, const std::string& name) {
      requests.push_back(op + " " + name);
    };
    EXPECT_FALSE(sb.iconShown());  // not shown at launch

    ASSERT_TRUE(device.announce(sb.app(), kAdd));
    EXPECT_TRUE(sb.iconShown());
    ASSERT_TRUE(device.announce(sb.app(), kAdd));
    ASSERT_TRUE(device.announce(sb.app(), kRemove));
    EXPECT_FALSE(sb.iconShown());
    ASSERT_TRUE(device.announce(sb.app(), kRemove));
    EXPECT_EQ(requests,
              (std::vector<std::string>{"add HSWL", "add HSWL", "remove HSWL", "remove HSWL"}));
  });
}

}  // namespace
}  // namespace hushwall::testing
