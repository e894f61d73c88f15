// hushwall-app: one simulated app process of a device, WhatsApp or
// SpringBoard, with Hushwall injected the way the device injects it.
//
// It sets up the app's own classes, loads the library (whose start-up runs
// at once), and then serves hushwall-sim: one JSON request per line on
// stdin, one JSON reply per line on stdout (sim/protocol.h). Between
// requests its main loop delivers the device's notifications, as an app's
// run loop would. Requests are scenario steps ("do" as in the scenario) and
// four of the simulator's own: "clock" (fix the device clock at "at"),
// "sync" (take in every notification routed to this process so far),
// "state" (what the final state needs) and "quit". Every reply carries the
// events of the request ("events") and whether notifications were delivered
// since the last reply ("delivered"); before a reply goes out, everything
// the process posted has been routed by the bus.
//
// Something that escapes the app's or the library's code ends the process
// with std::terminate, as an uncaught exception ends an app on the device;
// hushwall-sim sees the pipe close and restarts the app.
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <set>

#include "sim/app_observer.h"
#include "sim/app_steps.h"
#include "sim/json_values.h"
#include "sim/protocol.h"
#include "simhost/host_log.h"
#include "simhost/simulated_app.h"
#include "platform/linux/sqlite_no_links.h"

namespace hushwall::sim {
namespace {

using nlohmann::json;

class Server {
 public:
  Server(simhost::SimulatedApp& app, AppObserver& observer, AppSteps& steps)
      : app_(app), observer_(observer), steps_(steps) {}

  // Serves until "quit", "terminate" or the end of stdin.
  void run() {
    reply({{"ready", true}, {"busName", app_.device().notifyCenter().uniqueName()}});
    serveLines([this]() -> auto& { return app_.device().notifyCenter(); },
               [this](const std::string& line) { return handle(line); });
  }

 private:
  // False when the process is to end.
  bool handle(const std::string& line) {
    auto& center = app_.device().notifyCenter();
    json answer = {{"ok", true}};
    bool goOn = true;
    try {
      const json request = json::parse(line);
      const std::string kind = request.at("do").get<std::string>();
      if (kind == "sync") {
        center.roundTripToBus();
        center.processPending();
      } else if (kind == "clock") {
        app_.device().clock().setFixedTime(request.at("at").get<double>());
      } else if (kind == "state") {
        answer["state"] = steps_.state();
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
    } catch (const TooDeeplyNested& e) {
      answer = {{"error", std::string("bad request: ") + e.what()}};
    }
    center.roundTripToBus();
    answer["delivered"] = observer_.deliveries() > 0;
    answer["events"] = observer_.takeEvents();
    return reply(answer) && goOn;
  }

  bool reply(const json& message) { return writeLine(STDOUT_FILENO, message); }

  simhost::SimulatedApp& app_;
  AppObserver& observer_;
  AppSteps& steps_;
};

}  // namespace
}  // namespace hushwall::sim

int main(int argc, char** argv) {
  using namespace hushwall;
  CLI::App cli{"One simulated app process of a Hushwall device (driven by hushwall-sim)"};
  std::string root, app, library;
  std::vector<std::string> chats;
  cli.add_option("--root", root, "device root")->required();
  cli.add_option("--app", app, "which app")->required()->check(CLI::IsMember({"whatsapp", "springboard"}));
  cli.add_option("--library", library, "the library to inject")->required();
  cli.add_option("--chat", chats, "a chat the messenger holds (its JID)");
  CLI11_PARSE(cli, argc, argv);

  // An app dies with the simulator that drives it, and leaves no core file.
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  // No database of the device is opened through a link planted in it.
  hushwall::linux_platform::refuseLinkedDatabases();
  rlimit noCore{0, 0};
  ::setrlimit(RLIMIT_CORE, &noCore);

  const bool whatsApp = app == "whatsapp";
  simhost::hostLog().chats = std::set<std::string>(chats.begin(), chats.end());
  std::optional<simhost::SimulatedApp> process;
  try {
    process.emplace(root, host::T(whatsApp ? "net.whatsapp.WhatsApp" : "com.apple.springboard"),
                    whatsApp ? simhost::AppClasses::kWhatsApp : simhost::AppClasses::kSpringBoard);
  } catch (const std::exception& e) {
    std::cerr << "hushwall-app: cannot start " << app << ": " << e.what() << "\n";
    return 2;
  }
  sim::AppObserver observer(*process);
  try {
    process->loadLibrary(library);
  } catch (const std::runtime_error& e) {
    std::cerr << "hushwall-app: " << e.what() << "\n";
    return 2;
  }
  observer.listenForNotifications();
  sim::AppSteps steps(*process, observer,
                      whatsApp ? sim::AppSteps::Kind::kWhatsApp : sim::AppSteps::Kind::kSpringBoard,
                      library);
  sim::Server(*process, observer, steps).run();
  return 0;
}
