// One app process of the simulated device with the phone's code in it: the
// Objective-C stand-in of WhatsApp or SpringBoard (its bundle gives the
// process its identity), into which the device adapter is loaded the way
// the Substrate loader loads Hushwall.dylib. hushwall-sim --device objc
// drives it exactly as it drives hushwall-app (sim/app_main.cpp): one JSON
// request per line on stdin, one reply per line on stdout, the device's
// notifications delivered between requests, the same events and the same
// final state. Steps are carried out on the Objective-C classes with real
// message sends, so what the adapter hooks is what the phone would hand it.
#import <Foundation/Foundation.h>

#include <dlfcn.h>
#include <objc/runtime.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "objchost/objc_host_log.h"
#include "platform/gnustep/stand_in_device.h"
#include "platform/linux/dbus_notify_center.h"
#include "sim/json_values.h"
#include "sim/library_peek.h"
#include "sim/protocol.h"

#ifdef HUSHWALL_OBJC_WHATSAPP
#import "objchost/whatsapp_classes.h"
#else
#import "objchost/springboard_classes.h"
#endif

namespace hushwall::objchost {
namespace {

using nlohmann::json;

// A step that cannot be played in the app's present state; reported to the
// simulator, which stops the run. Anything else ends the process.
class StepError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

NSString* ns(const std::string& utf8) {
  return [[[NSString alloc] initWithBytes:utf8.data() length:utf8.size()
                                 encoding:NSUTF8StringEncoding] autorelease];
}

NSString* text(const json& object, const char* key) {
  auto found = object.find(key);
  return found != object.end() && found->is_string() ? ns(found->get<std::string>()) : nil;
}

// The device clock: the simulator fixes it per step, and the adapter reads
// the time through +[NSDate date].
std::optional<double> fixedTime;
IMP realDate = nullptr;

id deviceDate(id self, SEL selector) {
  if (fixedTime) return [NSDate dateWithTimeIntervalSince1970:*fixedTime];
  return reinterpret_cast<id (*)(id, SEL)>(realDate)(self, selector);
}

void installDeviceClock() {
  Method date = class_getClassMethod([NSDate class], @selector(date));
  realDate = method_setImplementation(date, reinterpret_cast<IMP>(&deviceDate));
}

#ifndef HUSHWALL_OBJC_WHATSAPP
// What SpringBoard would hold for a scenario's value: numbers, texts of the
// base string class, dictionaries and arrays; a null is a value absent.
id objectFor(const json& value) {
  if (value.is_boolean()) return [NSNumber numberWithBool:value.get<bool>()];
  if (value.is_number_integer()) return [NSNumber numberWithLongLong:value.get<long long>()];
  if (value.is_number()) return [NSNumber numberWithDouble:value.get<double>()];
  if (value.is_string()) return [HWBaseClassText textWithString:ns(value.get<std::string>())];
  if (value.is_array()) {
    NSMutableArray* array = [NSMutableArray array];
    for (const json& item : value) {
      if (id object = objectFor(item)) [array addObject:object];
    }
    return array;
  }
  if (value.is_object()) {
    NSMutableDictionary* dictionary = [NSMutableDictionary dictionary];
    for (const auto& [key, item] : value.items()) {
      if (id object = objectFor(item)) [dictionary setObject:object forKey:ns(key)];
    }
    return dictionary;
  }
  return nil;
}

json jsonOf(id value) {
  if (value == nil) return nullptr;
  if ([value isKindOfClass:[NSString class]]) return [value UTF8String];
  if ([value isKindOfClass:[NSNumber class]]) {
    const char type = *[value objCType];
    if (type == 'f' || type == 'd') return [value doubleValue];
    return [value longLongValue];
  }
  return std::string("object of class ") + class_getName(object_getClass(value));
}
#endif

// What the app saw and did since the last reply, as hushwall-app reports it.
class Observer {
 public:
  explicit Observer(std::set<std::string> chats) : chats_(std::move(chats)) {}

  void listenForNotifications() {
    auto& carrier = gnustep::darwinNotifyCarrier();
    std::set<std::string> names;
    for (const auto& observation : carrier.observations()) names.insert(observation.name);
    for (const std::string& name : names) {
      carrier.addObserver(
          name,
          [this, name] {
            ++deliveries_;
            add({{"event", "received"}, {"name", name}});
          },
          host::SuspensionBehavior::kHold);
    }
  }

  // The badge of each app SpringBoard knows, by bundle identifier.
  void watchBadges(std::function<std::map<std::string, json>()> badges) {
    badges_ = std::move(badges);
    lastBadges_ = badges_();
  }

  void report(json event) { add(std::move(event)); }
  void noteBulletin(const void* bulletin, json given) { bulletins_[bulletin] = std::move(given); }
  json asGiven(const void* bulletin) const {
    auto found = bulletins_.find(bulletin);
    return found == bulletins_.end() ? json() : found->second;
  }
  int deliveries() const { return deliveries_; }

  json takeEvents() {
    collect();
    json taken = std::move(events_);
    events_ = json::array();
    deliveries_ = 0;
    return taken;
  }

  void collect() {
    const ObjcHostLog& log = objcHostLog();
    for (; delivered_ < log.delivered.size(); ++delivered_) {
      events_.push_back({{"event", "delivered"}, {"ids", log.delivered[delivered_]}});
    }
    for (; receipts_ < log.receipts.size(); ++receipts_) {
      events_.push_back({{"event", "receipts"}, {"ids", log.receipts[receipts_]}});
    }
    for (; sent_ < log.sent.size(); ++sent_) events_.push_back({{"event", "sent"}, {"id", log.sent[sent_]}});
    for (; opened_ < log.optionsOpened.size(); ++opened_) {
      events_.push_back({{"event", "optionsOpened"}, {"jid", log.optionsOpened[opened_].value_or("")}});
    }
    for (; sheets_ < log.sheets.size(); ++sheets_) {
      json buttons = json::array();
      for (const auto& button : log.sheets[sheets_].second) buttons.push_back(button.title);
      const auto& title = log.sheets[sheets_].first;
      events_.push_back({{"event", "sheet"}, {"title", title ? json(*title) : json()}, {"buttons", buttons}});
    }
    for (; backgrounded_ < log.backgrounded; ++backgrounded_) events_.push_back({{"event", "backgrounded"}});
    for (; terminated_ < log.terminated; ++terminated_) events_.push_back({{"event", "terminated"}});
    for (const auto& jid : chats_) {
      if (log.chats.count(jid) == 0) events_.push_back({{"event", "chatDeleted"}, {"jid", jid}});
    }
    chats_ = log.chats;
    for (; shown_ < log.shown.size(); ++shown_) {
      events_.push_back({{"event", "shown"}, {"to", log.shown[shown_].where},
                         {"bulletin", asGiven(log.shown[shown_].bulletin)}});
    }
    if (badges_) {
      std::map<std::string, json> now = badges_();
      for (const auto& [bundleId, badge] : now) {
        auto known = lastBadges_.find(bundleId);
        if (known == lastBadges_.end() || known->second != badge) {
          events_.push_back({{"event", "badge"}, {"bundleId", bundleId}, {"value", badge}});
        }
      }
      lastBadges_ = std::move(now);
    }
    const auto& sounds = gnustep::playedSystemSounds();
    for (; sounds_ < sounds.size(); ++sounds_) {
      events_.push_back({{"event", "sound"}, {"id", sounds[sounds_]}});
    }
    const auto& requests = gnustep::statusBarRequests();
    for (; statusBar_ < requests.size(); ++statusBar_) {
      const std::string& request = requests[statusBar_];
      const std::size_t space = request.find(' ');
      events_.push_back({{"event", "statusBar"}, {"change", request.substr(0, space)},
                         {"name", request.substr(space + 1)}});
    }
    const auto& alerts = gnustep::shownAlerts();
    for (; alerts_ < alerts.size(); ++alerts_) {
      events_.push_back({{"event", "alert"}, {"title", alerts[alerts_].title},
                         {"message", alerts[alerts_].message}, {"buttons", alerts[alerts_].buttons}});
    }
  }

 private:
  void add(json event) {
    collect();
    events_.push_back(std::move(event));
  }

  std::set<std::string> chats_;
  std::size_t delivered_ = 0, receipts_ = 0, sent_ = 0, opened_ = 0, sheets_ = 0, shown_ = 0,
              sounds_ = 0, statusBar_ = 0, alerts_ = 0;
  int backgrounded_ = 0, terminated_ = 0, deliveries_ = 0;
  json events_ = json::array();
  std::map<const void*, json> bulletins_;
  std::function<std::map<std::string, json>()> badges_;
  std::map<std::string, json> lastBadges_;
};

#ifndef HUSHWALL_OBJC_WHATSAPP
// The names of the status-bar images shown now.
json statusBarShown() {
  json shown = json::array();
  for (const std::string& request : gnustep::statusBarRequests()) {
    const std::string name = request.substr(request.find(' ') + 1);
    auto at = std::find(shown.begin(), shown.end(), name);
    if (request.rfind("add ", 0) == 0 && at == shown.end()) shown.push_back(name);
    if (request.rfind("remove ", 0) == 0 && at != shown.end()) shown.erase(at);
  }
  return shown;
}
#endif

#ifdef HUSHWALL_OBJC_WHATSAPP
class Steps {
 public:
  explicit Steps(Observer&) {
    connection_ = [[XMPPConnection alloc] init];
    chatList_ = [[ChatListViewController alloc] init];
    delegate_ = [[WhatsAppAppDelegate alloc] init];
  }

  void play(const json& step) {
    const std::string kind = step.at("do").get<std::string>();
    if (kind == "incoming") return incoming(step.at("stanzas"));
    if (kind == "send") return send(step.at("message"));
    if (kind == "chatOptions") {
      const json& given = step.at("cell");
      WAChatSessionCell* cell = [[[WAChatSessionCell alloc] init] autorelease];
      [cell setJid:text(given, "jid")];
      if (NSString* name = text(given, "name")) {
        UILabel* label = [[[UILabel alloc] init] autorelease];
        [label setText:name];
        [cell setNameLabel:label];
      }
      [chatList_ chatSessionCellShowMoreOptions:cell];
      return;
    }
    if (kind == "actionSheet") {
      [WABlockBasedActionSheet actionSheetWithTitle:text(step, "title")];
      return;
    }
    if (kind == "tap") return tap(step.at("button").get<std::string>());
    if (kind == "answer") {
      try {
        gnustep::tapAlertButton(step.at("index").get<std::int64_t>());
      } catch (const std::logic_error& e) {
        throw StepError(e.what());
      }
      return;
    }
    if (kind == "background") return [delegate_ applicationDidEnterBackground:nil];
    if (kind == "terminate") return [delegate_ applicationWillTerminate:nil];
    throw StepError("\"" + kind + "\" is no step for this app");
  }

  json state() {
    const ObjcHostLog& log = objcHostLog();
    json sheets = json::array();
    for (const auto& sheet : log.sheets) {
      json titles = json::array();
      for (const auto& button : sheet.second) titles.push_back(button.title);
      sheets.push_back(titles);
    }
    json alerts = json::array();
    for (const gnustep::ShownAlert& alert : gnustep::shownAlerts()) {
      alerts.push_back({{"title", alert.title}, {"message", alert.message}, {"buttons", alert.buttons}});
    }
    return {{"delivered", log.delivered}, {"receipts", log.receipts}, {"sent", log.sent},
            {"chats", log.chats}, {"sheets", sheets}, {"alerts", alerts}};
  }

 private:
  void incoming(const json& given) {
    NSMutableArray* stanzas = [NSMutableArray array];
    for (const json& item : given) {
      XMPPMessageStanza* stanza = [[[XMPPMessageStanza alloc] init] autorelease];
      [stanza setStanzaID:ns(item.value("id", ""))];
      [stanza setFromJID:text(item, "fromJID")];
      [stanza setText:text(item, "text")];
      [stanza setNickname:text(item, "nickname")];
      if (item.contains("timestamp")) {
        [stanza setTimestamp:[NSDate dateWithTimeIntervalSince1970:item["timestamp"].get<double>()]];
      }
      [stanza setHasMedia:item.value("hasMedia", false)];
      if (item.value("hasMedia", false)) {
        [stanza setMediaType:(int)item.value("mediaType", std::int64_t{0})];
        [stanza setMediaURL:text(item, "mediaURL")];
        if (item.contains("media")) {
          const host::Bytes bytes =
              sim::decodeBase64(item["media"].get<std::string>()).value_or(host::Bytes{});
          XMPPMediaElement* media = [[[XMPPMediaElement alloc] init] autorelease];
          [media setValue:[NSData dataWithBytes:bytes.data() length:bytes.size()]];
          [stanza setMedia:media];
        }
      }
      [stanzas addObject:stanza];
    }
    [connection_ processIncomingMessageStanzas:stanzas];
  }

  void send(const json& given) {
    WAMessage* message = [[[WAMessage alloc] init] autorelease];
    [message setMessageID:ns(given.value("id", ""))];
    [message setToJID:text(given, "toJID")];
    [message setText:text(given, "text")];
    [message setMessageType:(NSInteger)given.value("messageType", std::int64_t{0})];
    [message setMessageDate:[NSDate dateWithTimeIntervalSince1970:given.value("messageDate", 0.0)]];
    [connection_ sendMessage:message];
  }

  void tap(const std::string& title) {
    const auto& sheets = objcHostLog().sheets;
    if (sheets.empty()) throw StepError("no action sheet has been opened");
    std::string titles;
    for (const SheetButton& button : sheets.back().second) {
      if (button.title == title) return button.handler();
      titles += (titles.empty() ? "" : ", ") + ("\"" + button.title + "\"");
    }
    throw StepError("the last action sheet has no button \"" + title + "\" (it has " +
                    (titles.empty() ? "none" : titles) + ")");
  }

  XMPPConnection* connection_;
  ChatListViewController* chatList_;
  WhatsAppAppDelegate* delegate_;
};
#else
constexpr char kMessenger[] = "net.whatsapp.WhatsApp";

class Steps {
 public:
  // The messenger's icon is there before the tweak arrives, as on the phone.
  static void installMessenger() {
    SBApplication* messenger = [[SBApplication alloc] init];
    [messenger setBundleIdentifier:ns(kMessenger)];
    [SBApplicationController addApplication:messenger];
  }

  explicit Steps(Observer& observer) : observer_(observer) {
    apps_[kMessenger] = applicationFor(kMessenger);
    observer_.watchBadges([this] {
      std::map<std::string, json> badges;
      for (const auto& [bundleId, app] : apps_) badges[bundleId] = jsonOf([app badgeNumberOrString]);
      return badges;
    });
    banner_ = [[SBBulletinBannerController alloc] init];
    lockScreen_ = [[SBLockScreenNotificationListController alloc] init];
    notificationCenter_ = [[SBBulletinObserverViewController alloc] init];
  }

  void play(const json& step) {
    const std::string kind = step.at("do").get<std::string>();
    if (kind == "bulletin") return bulletin(step.at("to").get<std::string>(), step.at("bulletin"));
    if (kind == "badge") {
      const std::string bundleId = step.at("bundleId").get<std::string>();
      SBApplication* app = applicationFor(bundleId);
      const json& value = step.at("value");
      // GNUstep's own string classes are subclasses of the base class.
      [app setBadge:value.is_object() ? ns(value["subclassText"].get<std::string>()) : objectFor(value)];
      observer_.report({{"event", "badgeRequest"}, {"bundleId", bundleId}, {"requested", step.at("value")},
                        {"shows", jsonOf([app badgeNumberOrString])}});
      return;
    }
    throw StepError("\"" + kind + "\" is no step for this app");
  }

  json state() {
    json shown = {{"banner", json::array()}, {"lockscreen", json::array()},
                  {"notificationCenter", json::array()}};
    for (const ObjcHostLog::Shown& entry : objcHostLog().shown) {
      shown[entry.where].push_back(observer_.asGiven(entry.bulletin));
    }
    return {{"shown", shown},
            {"badge", jsonOf([applicationFor(kMessenger) badgeNumberOrString])},
            {"statusBar", statusBarShown()}};
  }

 private:
  SBApplication* applicationFor(const std::string& bundleId) {
    NSArray* apps = [[SBApplicationController sharedInstance] applicationsWithBundleIdentifier:ns(bundleId)];
    if ([apps count] > 0) return [apps objectAtIndex:0];
    SBApplication* app = [[SBApplication alloc] init];
    [app setBundleIdentifier:ns(bundleId)];
    [SBApplicationController addApplication:app];  // installed now
    return apps_[bundleId] = app;
  }

  void bulletin(const std::string& to, const json& given) {
    BBBulletin* bulletin = [[[BBBulletin alloc] init] autorelease];
    [bulletin setSectionID:text(given, "sectionID")];
    if (given.contains("context")) [bulletin setContext:objectFor(given["context"])];
    [bulletin setMessage:text(given, "message")];
    [bulletin retain];  // the final state names it
    observer_.noteBulletin(bulletin, given);
    id controller = to == "banner" ? banner_ : to == "lockscreen" ? lockScreen_ : notificationCenter_;
    const std::size_t before = objcHostLog().shown.size();
    // The observer is some SpringBoard object and an object stands for the
    // reply block. Where the controller has the longer method of later
    // firmware, SpringBoard hands bulletins through that one.
    deliverTo(controller, [[[NSObject alloc] init] autorelease], bulletin,
              [[[NSObject alloc] init] autorelease]);
    if (objcHostLog().shown.size() == before) {
      observer_.report({{"event", "withheld"}, {"to", to}, {"bulletin", given}});
    }
  }

  Observer& observer_;
  std::map<std::string, SBApplication*> apps_;  // those the steps have met
  id banner_, lockScreen_, notificationCenter_;
};
#endif

class Server {
 public:
  Server(Observer& observer, Steps& steps, std::string library)
      : observer_(observer), steps_(steps), library_(std::move(library)) {}

  void run() {
    auto& center = gnustep::darwinNotifyCarrier();
    reply({{"ready", true}, {"busName", center.uniqueName()}});
    sim::serveLines([&center]() -> auto& { return center; },
                    [this](const std::string& line) { return handle(line); });
  }

 private:
  bool handle(const std::string& line) {
    auto& center = gnustep::darwinNotifyCarrier();
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    json answer = {{"ok", true}};
    bool goOn = true;
    try {
      const json request = json::parse(line);
      const std::string kind = request.at("do").get<std::string>();
      if (kind == "sync") {
        center.roundTripToBus();
        center.processPending();
      } else if (kind == "clock") {
        fixedTime = request.at("at").get<double>();
      } else if (kind == "state") {
        json state = sim::peekLibrary(library_);
        state.update(steps_.state());
        answer["state"] = state;
      } else if (kind == "quit") {
        goOn = false;
      } else {
        steps_.play(request);
        goOn = kind != "terminate";
      }
    } catch (const StepError& e) {
      answer = {{"error", e.what()}};
    } catch (const json::exception& e) {
      answer = {{"error", std::string("bad request: ") + e.what()}};
    }
    [pool drain];
    center.roundTripToBus();
    answer["delivered"] = observer_.deliveries() > 0;
    answer["events"] = observer_.takeEvents();
    return reply(answer) && goOn;
  }

  bool reply(const json& message) { return sim::writeLine(STDOUT_FILENO, message); }

  Observer& observer_;
  Steps& steps_;
  std::string library_;
};

}  // namespace
}  // namespace hushwall::objchost

int main(int argc, char** argv) {
  using namespace hushwall;
  using namespace hushwall::objchost;
#ifdef HUSHWALL_OBJC_WHATSAPP
  const char* const identity = "net.whatsapp.WhatsApp";
  const std::string app = "whatsapp";
#else
  const char* const identity = "com.apple.springboard";
  const std::string app = "springboard";
#endif
  CLI::App cli{"One app process of a Hushwall device, the phone's code in an Objective-C app"};
  std::string root, library, given, firmware;
  std::vector<std::string> chats;
  cli.add_option("--root", root, "device root")->required();
  cli.add_option("--app", given, "which app")->required()->check(CLI::IsMember({app}));
  cli.add_option("--library", library, "the adapter library to inject")->required();
  cli.add_option("--chat", chats, "a chat the messenger holds (its JID)");
  cli.add_option("--firmware", firmware, "the firmware version whose SpringBoard this is")
      ->required();
  CLI11_PARSE(cli, argc, argv);

  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  rlimit noCore{0, 0};
  ::setrlimit(RLIMIT_CORE, &noCore);

  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  if (![[[NSBundle mainBundle] bundleIdentifier] isEqual:[NSString stringWithUTF8String:identity]]) {
    std::cerr << "hushwall objc app: not in its bundle (" << identity << ")\n";
    return 2;
  }
  try {
    objcHostLog().chats = std::set<std::string>(chats.begin(), chats.end());
    gnustep::bootDevice(root);
#ifndef HUSHWALL_OBJC_WHATSAPP
    // The stand-in's classes are those of the firmware's generation.
    installSpringBoardFirmware(firmware);
#endif
  } catch (const std::exception& e) {
    std::cerr << "hushwall objc app: cannot start " << app << ": " << e.what() << "\n";
    return 2;
  }
  installDeviceClock();
#ifndef HUSHWALL_OBJC_WHATSAPP
  Steps::installMessenger();
#endif
  Observer observer(objcHostLog().chats);
  if (::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE) == nullptr) {
    std::cerr << "hushwall objc app: cannot load the tweak: " << ::dlerror() << "\n";
    return 2;
  }
  observer.listenForNotifications();
  Steps steps(observer);
  Server(observer, steps, library).run();
  [pool drain];
  return 0;
}
