// The scenario's SpringBoard side in the simulated app (libHushwall.so over
// the simulated host runtime).
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "objchost/two_hosts.h"
#include "simhost/host_log.h"
#include "simhost/test_springboard.h"
#include "testing/child_process.h"

namespace hushwall::objchost {
namespace {

using host::Value;
using simhost::hostLog;

constexpr const char* kControllers[][2] = {
    {"banner", "SBBulletinBannerController"},
    {"lockscreen", "SBLockScreenNotificationListController"},
    {"notificationCenter", "SBBulletinObserverViewController"}};

class SimSpringBoard : public SpringBoardDriver {
 public:
  SimSpringBoard(const testing::TestDevice& device, testing::TestSpringBoard& sb,
                 testing::NotificationCounter& posted)
      : device_(device), sb_(sb), posted_(posted) {
    for (const auto& controller : kControllers) {
      controllers_[controller[0]] = sb.app().make(controller[1]);
    }
    sb.app().device().statusBar().onChange = [this](const std::string& op,
                                                    const std::string& name) {
      statusBar_.push_back(op + " " + name);
    };
  }

  void deliver(const OptString& sectionID, const Value& context,
               const OptString& message) override {
    const Value bulletin = sb_.bulletin(sectionID, context, message);
    for (const auto& controller : kControllers) {
      const std::size_t before = hostLog().shown[controller[0]].size();
      sb_.app().send(controllers_[controller[0]], "observer:addBulletin:forFeed:",
                     {sb_.app().make("NSObject"), bulletin, Value::integer(kFeed)});
      if (hostLog().shown[controller[0]].size() > before) {
        log.push_back(std::string("shown ") + controller[0]);
      }
    }
    logBadge();
  }

  void messengerSetsBadge(const Value& badge) override {
    sb_.app().send(sb_.messenger(), "setBadge:", {badge});
    logBadge();
  }

  void postFromOutside(const std::string& name) override {
    EXPECT_TRUE(device_.announce(sb_.app(), name)) << name;
  }

  void changeSettings(const Flags& flags) override {
    device_.writeFlags(flags);
    postFromOutside("com.Corvanta.HushwallSettings.settingsChanged");
  }

  void settle() override {
    EXPECT_TRUE(posted_.settle());
    log.push_back("vibrations " + std::to_string(sb_.vibrations()));
    log.push_back("status bar " + joined(statusBar_));
    for (const std::string& name : kPostedNames) {
      log.push_back("posted " + name + " " + std::to_string(posted_.count(name)));
    }
  }

 private:
  void logBadge() { log.push_back("badge " + describe(sb_.messengerBadge())); }

  const testing::TestDevice& device_;
  testing::TestSpringBoard& sb_;
  testing::NotificationCounter& posted_;
  std::map<std::string, Value> controllers_;
  std::vector<std::string> statusBar_;
};

}  // namespace

Log runSimulatedSpringBoard(const testing::TestDevice& device, const Value& messengerBadge,
                            const SpringBoardScript& script) {
  testing::runInChildProcess([&] {
    // SpringBoard's start-up posts nothing, so counting may begin after it.
    testing::TestSpringBoard sb(device, HUSHWALL_LIBRARY_PATH, messengerBadge);
    testing::NotificationCounter posted(sb.app(), kPostedNames);
    SimSpringBoard driver(device, sb, posted);
    script(driver);
    driver.settle();
    writeLog(device, "simulated", driver.log);
  });
  return readLog(device, "simulated");
}

}  // namespace hushwall::objchost
