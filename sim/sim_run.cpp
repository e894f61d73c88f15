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
  std::ofstream(file("scenario.json")) << scenario.dump(2);
  return playFile(file("scenario.json"));
}

SimResult SimRun::playFile(const std::string& path) const {
  const std::string out = file("out.txt"), err = file("err.txt"), state = file("state.json");
  fs::remove(state);
  pid_t pid = ::fork();
  if (pid == 0) {
    std::freopen(out.c_str(), "w", stdout);
    std::freopen(err.c_str(), "w", stderr);
    ::execl(HUSHWALL_SIM_PATH, "hushwall-sim", "run", path.c_str(), "--root", deviceRoot().c_str(),
            "--state", state.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
  }
  SimResult result;
  int status = 0;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (::waitpid(pid, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      ::kill(pid, SIGTERM);  // its handler takes its children along
      ::waitpid(pid, &status, 0);
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
  result.output = slurp(out);
  result.errors = slurp(err);
  if (fs::exists(state)) result.state = nlohmann::json::parse(slurp(state));
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
