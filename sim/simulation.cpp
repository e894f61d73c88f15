#include "sim/simulation.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "companion/blacklist_editor.h"
#include "platform/linux/dbus_daemon.h"
#include "platform/linux/dbus_notify_center.h"
#include "platform/linux/device_root_file_system.h"
#include "platform/linux/device_bus_address.h"
#include "sim/app_process.h"
#include "sim/child_cleanup.h"
#include "sim/device_setup.h"
#include "sim/final_state.h"
#include "sim/notification_recorder.h"
#include "startup/notification_names.h"

namespace hushwall::sim {
namespace {

using nlohmann::json;

constexpr int kExitTimeoutMs = 5000;
// On top of the idle limit, how long a step may take per stanza it hands
// over before the simulator stops waiting even for an app that keeps busy.
constexpr long long kMsPerStanza = 50;
// Callbacks that post, whose posts are heard by callbacks that post, ...:
// a device that keeps talking this long after a step never settles.
constexpr int kMaxSettleRounds = 20;
// In start order: SpringBoard seeds the database before WhatsApp reads it.
const char* const kApps[] = {"springboard", "whatsapp"};

// The device's bus, watched so that a signal to the simulator stops it too.
struct RunningBus {
  explicit RunningBus(const std::string& root) : bus(root) { watchChild(bus.pid()); }
  ~RunningBus() { forgetChild(bus.pid()); }
  linux_platform::DeviceBus bus;
};

class Simulation {
 public:
  Simulation(const Scenario& scenario, const std::string& root, const SimulationPaths& paths,
             int replyIdleMs, Transcript& transcript)
      : scenario_(scenario), root_(root), paths_(paths), replyIdleMs_(replyIdleMs),
        transcript_(transcript) {}

  // A run that cannot go on still reports what the device holds by then,
  // with the failure in it.
  RunOutcome run() {
    try {
      return {playScenario(), std::nullopt};
    } catch (const std::exception& e) {
      const std::string failure = e.what();
      transcript_.heading("\nThe run stops: " + failure);
      return {stateAfterFailure(failure), failure};
    }
  }

 private:
  json playScenario() {
    // Before the device's files are laid out: a root whose bus socket
    // cannot exist must leave the root as it was.
    linux_platform::deviceBusSocketPath(root_);
    prepareDevice(root_, scenario_, paths_.templateDatabase);
    chats_ = initialChats(scenario_);
    bus_ = std::make_unique<RunningBus>(root_);
    transcript_.say("bus", "dbus-daemon listening (pid " + std::to_string(bus_->bus.pid()) + ")");
    companion_ = std::make_unique<linux_platform::DBusNotifyCenter>(bus_->bus.address());
    posters_[companion_->uniqueName()] = "companion";
    recorder_ = std::make_unique<NotificationRecorder>(bus_->bus.address());
    for (const char* app : kApps) start(app);
    settle(nullptr);
    files_ = {{"database", databaseState(root_)}, {"pictures", savedPictures(root_)}};
    for (const Step& step : scenario_.steps) {
      current_ = &step;
      play(step);
    }
    current_ = nullptr;
    transcript_.heading("\nEnd of the scenario");
    json state = finalState();
    shutDown();
    return state;
  }

  // How long to wait for `app`'s reply during `step` (nothing: between
  // steps): as long as it works, within a limit that grows with the stanzas
  // the step hands over, telling the transcript now and then.
  ReplyWait waitFor(const std::string& app, const Step* step) {
    ReplyWait wait;
    wait.idleMs = replyIdleMs_;
    std::size_t stanzas = 0;
    if (step && step->kind == "incoming") stanzas = step->body["stanzas"].size();
    wait.totalMs = replyIdleMs_ + kMsPerStanza * static_cast<long long>(stanzas);
    const std::string about = step ? " with " + stepName(*step) : "";
    wait.progress = [this, app, about](double waited, double processor) {
      char line[120];
      std::snprintf(line, sizeof line, "still busy%s: %.0f s so far, %.1f s of processor time",
                    about.c_str(), waited, processor);
      transcript_.say(app, line);
    };
    return wait;
  }

  void start(const std::string& app) {
    std::vector<std::string> argv = {app == "whatsapp" ? paths_.whatsApp : paths_.springBoard, "--root",
                                     root_, "--app", app, "--library", paths_.library};
    argv.insert(argv.end(), paths_.appOptions.begin(), paths_.appOptions.end());
    if (app == "whatsapp") {
      for (const std::string& chat : chats_) argv.insert(argv.end(), {"--chat", chat});
    }
    const std::string logs = root_ + "/var/log/hushwall-sim";
    std::filesystem::create_directories(logs);
    auto process = std::make_unique<AppProcess>(app, argv, logs + "/" + app + ".stderr");
    auto ready = process->awaitReply(waitFor(app, nullptr));
    if (!ready) throw std::runtime_error(app + " did not start: " + process->howItEnded());
    posters_[ready->value("busName", "")] = app;
    transcript_.say(app, "started (pid " + std::to_string(process->pid()) + "), library loaded");
    apps_[app] = std::move(process);
    if (clock_) ask(app, {{"do", "clock"}, {"at", *clock_}}, nullptr);
  }

  // The reply; nothing when the app crashed instead (it has been restarted).
  std::optional<json> ask(const std::string& app, const json& request, const Step* step) {
    auto reply = apps_.at(app)->request(request, waitFor(app, step));
    if (!reply) {
      crashed(app, step);
      return std::nullopt;
    }
    const json& events = (*reply)["events"];
    transcript_.events(app, events);
    for (const json& event : events) {
      if (event.value("event", "") == "sound" && event.value("id", 0) == 4095) ++vibrations_;
      if (event.value("event", "") == "chatDeleted") chats_.erase(event["jid"].get<std::string>());
    }
    return reply;
  }

  void crashed(const std::string& app, const Step* step) {
    transcript_.say(app, "CRASHED, " + apps_.at(app)->howItEnded());
    crashes_.push_back({{"process", app}, {"step", step ? json(step->number) : json()},
                        {"kind", step ? json(step->kind) : json()}});
    apps_.erase(app);
    transcript_.say(app, "restarted by the device");
    start(app);
  }

  // Until every process has taken in every notification routed to it, and
  // nothing it did in turn is still under way.
  void settle(const Step* step) {
    reportNotifications();
    for (int round = 0; round < kMaxSettleRounds; ++round) {
      bool delivered = false;
      for (const char* app : kApps) {
        if (apps_.count(app) == 0) continue;
        auto reply = ask(app, {{"do", "sync"}}, step);
        delivered = delivered || !reply || reply->value("delivered", false);
      }
      reportNotifications();
      if (!delivered) return;
    }
    throw std::runtime_error("the device did not settle" + (step ? " after " + stepName(*step) : "") +
                             ": notifications keep coming");
  }

  void reportNotifications() {
    recorder_->sync();
    const auto& heard = recorder_->heard();
    for (; reported_ < heard.size(); ++reported_) {
      auto poster = posters_.find(heard[reported_].sender);
      transcript_.say(poster == posters_.end() ? heard[reported_].sender : poster->second,
                      "posts " + shortName(heard[reported_].name));
    }
  }

  void play(const Step& step) {
    transcript_.step(step);
    if (step.at) {
      clock_ = step.at;
      for (const char* app : kApps) {
        if (apps_.count(app)) ask(app, {{"do", "clock"}, {"at", *clock_}}, &step);
      }
    }
    if (auto app = appOfStep(step.kind)) {
      if (apps_.count(*app) == 0) start(*app);
      auto reply = ask(*app, step.body, &step);
      if (reply && reply->contains("error")) {
        throw StepFailed(stepName(step) + ": " + (*reply)["error"].get<std::string>());
      }
      if (reply && step.kind == "terminate") stop(*app, "exits");
    } else if (step.kind == "restart") {
      const std::string app = step.body["process"].get<std::string>();
      if (apps_.count(app)) {
        ask(app, {{"do", "quit"}}, &step);
        if (apps_.count(app)) stop(app, "stopped");
      }
      start(app);
    } else {
      companion(step);
    }
    settle(&step);
    reportFileChanges();
  }

  // What the step left in the device's files: rows the database gained or
  // lost, pictures saved.
  void reportFileChanges() {
    const json database = databaseState(root_), pictures = savedPictures(root_);
    const json& history = database["History"];
    for (std::size_t i = files_["database"]["History"].size(); i < history.size(); ++i) {
      transcript_.say("database", "History gains " + describeHistoryRow(history[i]));
    }
    auto ids = [](const json& rows) {
      std::map<json, json> byId;
      for (const json& row : rows) byId[row["id"]] = row;
      return byId;
    };
    const auto before = ids(files_["database"]["Blacklist"]), after = ids(database["Blacklist"]);
    for (const auto& [id, row] : before) {
      if (after.count(id) == 0) transcript_.say("database", "Blacklist loses " + describeBlacklistRow(row));
    }
    for (const auto& [id, row] : after) {
      if (before.count(id) == 0) transcript_.say("database", "Blacklist gains " + describeBlacklistRow(row));
    }
    for (const json& picture : pictures) {
      const json& known = files_["pictures"];
      if (std::find(known.begin(), known.end(), picture) == known.end()) {
        transcript_.say("files", "picture saved at " + picture.get<std::string>());
      }
    }
    files_ = {{"database", database}, {"pictures", pictures}};
  }

  void stop(const std::string& app, const std::string& how) {
    apps_.at(app)->waitForExit(kExitTimeoutMs);
    apps_.erase(app);
    transcript_.say(app, how);
  }

  // The settings bundle's logic, announcing on the device's bus.
  companion::BlacklistEditor blacklist() { return companion::BlacklistEditor(files_system_, *companion_); }

  // What the settings bundle does: files first, then the announcement.
  void companion(const Step& step) {
    const json& body = step.body;
    try {
      if (step.kind == "settings") {
        writeSettingsFile(root_, body["values"]);
        transcript_.say("companion", "writes the settings file");
        companion_->post(kSettingsChangedNotification);
      } else if (step.kind == "blacklistAdd") {
        const std::string number = body["phoneNumber"].get<std::string>();
        blacklist().add(number, body.value("name", ""));
        transcript_.say("companion", "adds " + number + " to the blacklist");
      } else if (step.kind == "blacklistRemove") {
        const std::string number = body["phoneNumber"].get<std::string>();
        int rows = blacklist().removeNumber(number);
        transcript_.say("companion", "removes " + number + " from the blacklist (" +
                                         std::to_string(rows) + (rows == 1 ? " row)" : " rows)"));
      } else if (step.kind == "post") {
        companion_->post(body["name"].get<std::string>());
      }
    } catch (const std::exception& e) {
      throw StepFailed(stepName(step) + ": " + e.what());
    }
    companion_->roundTripToBus();
  }

  json finalState() {
    for (const char* app : kApps) {
      if (apps_.count(app) == 0) start(app);  // a terminated app is opened again to be looked at
    }
    settle(nullptr);
    json state;
    for (const char* app : kApps) {
      auto reply = apps_.at(app)->request({{"do", "state"}}, waitFor(app, nullptr));
      if (!reply || !reply->contains("state")) {
        throw std::runtime_error(std::string(app) + " could not report its state");
      }
      state[app] = (*reply)["state"];
    }
    addDeviceState(state);
    return state;
  }

  // What the device's files, its bus and the apps that still answer hold
  // after a failure. An app that owes a reply is killed first: whatever it
  // wrote next would answer the wrong request. Its database may be left
  // with a hot journal, which the read rolls back.
  json stateAfterFailure(const std::string& failure) {
    json state;
    for (const char* app : kApps) {
      state[app] = nullptr;
      auto found = apps_.find(app);
      if (found == apps_.end()) continue;
      if (found->second->owesReply()) {
        transcript_.say(app, "killed, it does not answer");
        apps_.erase(found);
        continue;
      }
      try {
        auto reply = found->second->request({{"do", "state"}}, waitFor(app, nullptr));
        if (reply && reply->contains("state")) state[app] = (*reply)["state"];
      } catch (const std::exception& e) {
        transcript_.say(app, std::string("reports no state: ") + e.what());
      }
    }
    try {
      addDeviceState(state);
    } catch (const std::exception& e) {
      state["device"] = {{"error", e.what()}};
    }
    state["failure"] = {{"step", current_ ? json(current_->number) : json()},
                        {"kind", current_ ? json(current_->kind) : json()},
                        {"message", failure}};
    return state;
  }

  void addDeviceState(json& state) {
    json notifications = json::array();
    if (recorder_) {
      for (const auto& heard : recorder_->heard()) notifications.push_back(heard.name);
    }
    state["device"] = {{"vibrations", vibrations_}, {"notifications", notifications}};
    state["database"] = databaseState(root_);
    state["files"] = savedPictures(root_);
    state["crashes"] = crashes_;
  }

  void shutDown() {
    for (auto& [app, process] : apps_) {
      process->request({{"do", "quit"}}, waitFor(app, nullptr));
      process->waitForExit(kExitTimeoutMs);
    }
    apps_.clear();
    companion_.reset();
    recorder_.reset();
    bus_.reset();
    transcript_.say("bus", "stopped; the device is off");
  }

  const Scenario& scenario_;
  const std::string root_;
  const SimulationPaths paths_;
  const int replyIdleMs_;
  Transcript& transcript_;
  const Step* current_ = nullptr;  // the step being played
  std::set<std::string> chats_;  // what the messenger holds, kept across its restarts
  std::optional<double> clock_;
  int vibrations_ = 0;
  json crashes_ = json::array();
  std::map<std::string, std::string> posters_;  // unique bus name -> who
  std::size_t reported_ = 0;
  json files_;  // the database and pictures as the last step left them
  // Declared so that they go in reverse: apps first, the bus last.
  std::unique_ptr<RunningBus> bus_;
  std::unique_ptr<NotificationRecorder> recorder_;
  std::unique_ptr<linux_platform::DBusNotifyCenter> companion_;
  linux_platform::DeviceRootFileSystem files_system_{root_};
  std::map<std::string, std::unique_ptr<AppProcess>> apps_;
};

}  // namespace

RunOutcome runScenario(const Scenario& scenario, const std::string& root,
                       const SimulationPaths& paths, int replyIdleMs, Transcript& transcript) {
  return Simulation(scenario, root, paths, replyIdleMs, transcript).run();
}

}  // namespace hushwall::sim
