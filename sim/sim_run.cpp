#include "sim/sim_run.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace hushwall::sim {
namespace {

namespace fs = std::filesystem;

std::string slurp(const std::string& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

SimResult SimRun::play(const nlohmann::json& scenario) const {
  return finish(start(scenario));
}

SimResult SimRun::playFile(const std::string& path, const std::vector<std::string>& options) const {
  return finish(startFile(path, options));
}

pid_t SimRun::start(const nlohmann::json& scenario, const std::vector<std::string>& options) const {
  std::ofstream(file("scenario.json")) << scenario.dump(2);
  return startFile(file("scenario.json"), options);
}

pid_t SimRun::startFile(const std::string& path, const std::vector<std::string>& options) const {
  const std::string out = file("out.txt"), err = file("err.txt"), state = file("state.json");
  fs::remove(state);
  std::vector<std::string> argv = {"hushwall-sim", "run", path, "--root", deviceRoot(), "--state", state};
  argv.insert(argv.end(), options.begin(), options.end());
  std::vector<char*> args;
  for (std::string& arg : argv) args.push_back(arg.data());
  args.push_back(nullptr);
  pid_t pid = ::fork();
  if (pid == 0) {
    std::freopen(out.c_str(), "w", stdout);
    std::freopen(err.c_str(), "w", stderr);
    ::execv(HUSHWALL_SIM_PATH, args.data());
    ::_exit(127);
  }
  return pid;
}

std::string SimRun::output() const { return slurp(file("out.txt")); }

SimResult SimRun::finish(pid_t pid, int timeoutSeconds) const {
  SimResult result;
  int status = 0;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
  while (::waitpid(pid, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      ::kill(pid, SIGTERM);  // its handler takes its children along
      ::waitpid(pid, &status, 0);
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
  result.output = slurp(file("out.txt"));
  result.errors = slurp(file("err.txt"));
  if (fs::exists(file("state.json"))) result.state = nlohmann::json::parse(slurp(file("state.json")));
  return result;
}

std::vector<pid_t> processesMentioning(const std::string& text) {
  std::vector<pid_t> found;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    const pid_t pid = std::stoi(name);
    if (pid == ::getpid()) continue;
    std::string commandLine = slurp(entry.path() / "cmdline");
    if (commandLine.find(text) != std::string::npos) found.push_back(pid);
  }
  return found;
}

}  // namespace hushwall::sim
