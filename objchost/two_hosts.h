// Runs a scenario in both hosts (scenario.h). Each run is a fresh child
// process on the device given, which the caller prepares (settings,
// blacklist, database) the same way for both; the log comes back from the
// child through a file on that device.
#ifndef HUSHWALL_OBJCHOST_TWO_HOSTS_H_
#define HUSHWALL_OBJCHOST_TWO_HOSTS_H_

#include <string>
#include <vector>

#include "objchost/scenario.h"
#include "simhost/test_device.h"

namespace hushwall::objchost {

using Log = std::vector<std::string>;

// The notifications each host counts and logs after every step, in this
// order: what the library posts that another process would react to.
inline const std::vector<std::string> kPostedNames = {
    "com.Corvanta.HushwallSettings.addStatusBarIcon",
    "com.Corvanta.HushwallSettings.contactsChanged",
    "com.Corvanta.HushwallSettings.newMessagedAdded"};

// The simulated app with libHushwall.so.
Log runSimulatedWhatsApp(const testing::TestDevice& device, const WhatsAppScript& script);
Log runSimulatedSpringBoard(const testing::TestDevice& device, const host::Value& messengerBadge,
                            const SpringBoardScript& script);
// This Objective-C app with the device adapter. The app's bundle (WhatsApp.app,
// SpringBoard.app) is where its identity comes from; SpringBoard's methods
// are those of the firmware version given (springboard_firmware.h).
Log runObjcWhatsApp(const testing::TestDevice& device, const WhatsAppScript& script);
Log runObjcSpringBoard(const testing::TestDevice& device, const host::Value& messengerBadge,
                       const SpringBoardScript& script, const std::string& firmware);

// Shared by the runners: the child writes its log, the parent reads it.
void writeLog(const testing::TestDevice& device, const std::string& name, const Log& log);
Log readLog(const testing::TestDevice& device, const std::string& name);

}  // namespace hushwall::objchost

#endif  // HUSHWALL_OBJCHOST_TWO_HOSTS_H_
