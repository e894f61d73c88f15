#include "objchost/springboard_firmware.h"

#include <algorithm>
#include <iterator>
#include <regex>
#include <stdexcept>

namespace hushwall::objchost {
namespace {

// Bits of FirmwareMethod::dumps, in the order of kClassDumps.
enum : unsigned {
  k70 = 1u << 0,
  k71 = 1u << 1,
  k80 = 1u << 2,
  k81 = 1u << 3,
  k82 = 1u << 4,
  k84 = 1u << 5,
};

constexpr char kShort[] = "observer:addBulletin:forFeed:";
constexpr char kLong[] = "observer:addBulletin:forFeed:playLightsAndSirens:withReply:";
constexpr char kBanner[] = "SBBulletinBannerController";
constexpr char kLockScreen[] = "SBLockScreenNotificationListController";
constexpr char kNotificationCenter[] = "SBBulletinObserverViewController";

// Paths below are relative to each dump's folder (ClassDump::where).
const FirmwareMethod kIOS7[] = {
    // SpringBoard/SBBulletinBannerController.h:38 in both
    {kBanner, '-', kShort, "(void)(id)(id)(unsigned long long)", k70 | k71},
    // SpringBoard/SBLockScreenNotificationListController.h:95 (7.0), :124 (7.1)
    {kLockScreen, '-', kShort, "(void)(id)(id)(unsigned long long)", k70 | k71},
    // SpringBoard/SBBulletinObserverViewController.h:66 (7.0), :68 (7.1)
    {kNotificationCenter, '-', kShort, "(void)(id)(id)(unsigned long long)", k70 | k71},
    // SpringBoard/SBApplication.h:358, :359, :498 (7.0); :368, :369, :510 (7.1)
    {"SBApplication", '-', "setBadge:", "(void)(id)", k70 | k71},
    {"SBApplication", '-', "badgeNumberOrString", "(id)", k70 | k71},
    {"SBApplication", '-', "bundleIdentifier", "(id)", k70 | k71},
    // SpringBoard/SBApplicationController.h:35, :76 (7.0); :34, :75 (7.1)
    {"SBApplicationController", '+', "sharedInstance", "(id)", k70 | k71},
    {"SBApplicationController", '-', "applicationsWithBundleIdentifier:", "(id)(id)", k70 | k71},
    // PrivateFrameworks/BulletinBoard/BBBulletin.h:101, :75, :131 in both (properties)
    {"BBBulletin", '-', "sectionID", "(NSString *)", k70 | k71},
    {"BBBulletin", '-', "context", "(NSDictionary *)", k70 | k71},
    {"BBBulletin", '-', "message", "(NSString *)", k70 | k71},
    // Frameworks/UIKit/UIApplication.h:398, :396 (7.0); :397, :395 (7.1)
    {"UIApplication", '-', "addStatusBarImageNamed:", "(void)(id)", k70 | k71},
    {"UIApplication", '-', "removeStatusBarImageNamed:", "(void)(id)", k70 | k71},
};

// iOS 8.0 gives the lock screen the observer protocol's longer method in
// place of the short one; the banner keeps the short one until 8.2.
// SBApplicationController answers one application per identifier.
const FirmwareMethod kIOS80[] = {
    // SpringBoard/SBBulletinBannerController.h:39 in both
    {kBanner, '-', kShort, "(void)(id)(id)(unsigned long long)", k80 | k81},
    // SpringBoard/SBLockScreenNotificationListController.h:140 in both
    {kLockScreen, '-', kLong,
     "(void)(id)(id)(unsigned long long)(_Bool)(CDUnknownBlockType)", k80 | k81},
    // SpringBoard/SBBulletinObserverViewController.h:74 in both
    {kNotificationCenter, '-', kShort, "(void)(id)(id)(unsigned long long)", k80 | k81},
    // SpringBoard/SBApplication.h:344, :345, :498 (8.0); :345, :346, :500 (8.1)
    {"SBApplication", '-', "setBadge:", "(void)(id)", k80 | k81},
    {"SBApplication", '-', "badgeNumberOrString", "(id)", k80 | k81},
    {"SBApplication", '-', "bundleIdentifier", "(id)", k80 | k81},
    // SpringBoard/SBApplicationController.h:35, :82 in both
    {"SBApplicationController", '+', "sharedInstance", "(id)", k80 | k81},
    {"SBApplicationController", '-', "applicationWithBundleIdentifier:", "(id)(id)", k80 | k81},
    // PrivateFrameworks/BulletinBoard/BBBulletin.h:107, :80, :149 (8.0); :109, :82, :151 (8.1)
    {"BBBulletin", '-', "sectionID", "(NSString *)", k80 | k81},
    {"BBBulletin", '-', "context", "(NSDictionary *)", k80 | k81},
    {"BBBulletin", '-', "message", "(NSString *)", k80 | k81},
    // Frameworks/UIKit/UIApplication.h:444, :442 in both
    {"UIApplication", '-', "addStatusBarImageNamed:", "(void)(id)", k80 | k81},
    {"UIApplication", '-', "removeStatusBarImageNamed:", "(void)(id)", k80 | k81},
};

// iOS 8.2 gives the banner the longer method in place of the short one.
// The 8.2 dump has no BulletinBoard or UIKit; the 8.4 dump is of a 32-bit
// binary, so the bulletin methods appear once in each word size.
const FirmwareMethod kIOS82[] = {
    // SpringBoard/SBBulletinBannerController.h:54 in both
    {kBanner, '-', kLong, "(void)(id)(id)(unsigned long long)(BOOL)(/*^block*/id)", k82},
    {kBanner, '-', kLong, "(void)(id)(id)(unsigned)(char)(/*^block*/id)", k84},
    // SpringBoard/SBLockScreenNotificationListController.h:172 in both
    {kLockScreen, '-', kLong, "(void)(id)(id)(unsigned long long)(BOOL)(/*^block*/id)", k82},
    {kLockScreen, '-', kLong, "(void)(id)(id)(unsigned)(char)(/*^block*/id)", k84},
    // SpringBoard/SBBulletinObserverViewController.h:178 in both
    {kNotificationCenter, '-', kShort, "(void)(id)(id)(unsigned long long)", k82},
    {kNotificationCenter, '-', kShort, "(void)(id)(id)(unsigned)", k84},
    // SpringBoard/SBApplication.h:566, :395, :537 (8.2); :569, :373, :538 (8.4)
    {"SBApplication", '-', "setBadge:", "(void)(id)", k82 | k84},
    {"SBApplication", '-', "badgeNumberOrString", "(id)", k82 | k84},
    {"SBApplication", '-', "bundleIdentifier", "(id)", k82 | k84},
    // SpringBoard/SBApplicationController.h:42, :91 (8.2); :41, :90 (8.4)
    {"SBApplicationController", '+', "sharedInstance", "(id)", k82 | k84},
    {"SBApplicationController", '-', "applicationWithBundleIdentifier:", "(id)(id)", k82 | k84},
    // PrivateFrameworks/BulletinBoard/BBBulletin.h:368, :202, :205 (8.4)
    {"BBBulletin", '-', "sectionID", "(NSString *)", k84},
    {"BBBulletin", '-', "context", "(NSDictionary *)", k84},
    {"BBBulletin", '-', "message", "(NSString *)", k84},
    // Frameworks/UIKit/UIApplication.h:433, :648 (8.4)
    {"UIApplication", '-', "addStatusBarImageNamed:", "(void)(id)", k84},
    {"UIApplication", '-', "removeStatusBarImageNamed:", "(void)(id)", k84},
};

// Released firmware of the generations, as major * 100 + minor.
constexpr int kReleased[] = {700, 701, 800, 801, 802, 803, 804};

// One declared type on arm64.
std::string arm64Type(const std::string& declared, int wordBits) {
  if (declared == "void") return "v";
  if (declared == "id" || (declared.size() > 2 && declared.compare(0, 2, "NS") == 0 &&
                           declared.back() == '*')) {
    return "@";
  }
  if (declared == "CDUnknownBlockType" || declared == "/*^block*/id") return "@?";
  if (declared == "unsigned long long") return "Q";
  if (declared == "_Bool" || declared == "BOOL") return "B";
  // A 32-bit dump's BOOL and NSUInteger.
  if (wordBits == 32 && declared == "char") return "B";
  if (wordBits == 32 && declared == "unsigned") return "Q";
  throw std::invalid_argument("no arm64 type known for \"" + declared + "\"");
}

}  // namespace

const ClassDump kClassDumps[] = {
    {700, "MP0w/iOS-Headers iOS7/", 64},
    {701, "MP0w/iOS-Headers iOS7.1/", 64},
    {800, "MP0w/iOS-Headers iOS8.0/", 64},
    {801, "MP0w/iOS-Headers iOS8.1/", 64},
    {802, "coleflowers/iOS8-Class-Dump", 64},
    {804, "Zob3k/iOS-8.4-Headers-Full", 32},
};
const std::size_t kClassDumpCount = std::size(kClassDumps);

const FirmwareProfile kFirmwareProfiles[] = {
    {"7.0-7.1", "7.0", 700, 800, kIOS7, std::size(kIOS7)},
    {"8.0-8.1", "8.0", 800, 802, kIOS80, std::size(kIOS80)},
    {"8.2-8.4", "8.2", 802, 900, kIOS82, std::size(kIOS82)},
};
const std::size_t kFirmwareProfileCount = std::size(kFirmwareProfiles);

const FirmwareProfile& firmwareProfileFor(const std::string& version) {
  static const std::regex kVersion(R"(([0-9]{1,2})\.([0-9]{1,2})(\.[0-9]{1,2})?)");
  std::smatch parts;
  const int firmware = std::regex_match(version, parts, kVersion)
                           ? std::stoi(parts[1]) * 100 + std::stoi(parts[2])
                           : 0;
  if (std::find(std::begin(kReleased), std::end(kReleased), firmware) != std::end(kReleased)) {
    for (const FirmwareProfile& profile : kFirmwareProfiles) {
      if (profile.since <= firmware && firmware < profile.before) return profile;
    }
  }
  throw std::invalid_argument("firmware '" + version +
                              "' is not one the package runs on (7.0 to 8.4)");
}

std::string arm64Encoding(const FirmwareMethod& method, const ClassDump& dump) {
  std::string encoding;
  const std::string declaration = method.declaration;
  for (std::size_t at = 0; at < declaration.size();) {
    const std::size_t close = declaration.find(')', at);
    if (declaration[at] != '(' || close == std::string::npos) {
      throw std::invalid_argument("malformed declaration " + declaration);
    }
    encoding += arm64Type(declaration.substr(at + 1, close - at - 1), dump.wordBits);
    if (at == 0) encoding += "@:";  // the receiver and the selector
    at = close + 1;
  }
  return encoding;
}

const FirmwareMethod* methodOf(const FirmwareProfile& profile, const std::string& className,
                               const std::string& selector) {
  for (std::size_t i = 0; i < profile.count; ++i) {
    const FirmwareMethod& method = profile.methods[i];
    if (className == method.className && selector == method.selector) return &method;
  }
  return nullptr;
}

const ClassDump& firstDumpOf(const FirmwareMethod& method) {
  for (std::size_t i = 0; i < kClassDumpCount; ++i) {
    if (method.dumps & (1u << i)) return kClassDumps[i];
  }
  throw std::invalid_argument(std::string("no dump declares ") + method.selector);
}

}  // namespace hushwall::objchost
