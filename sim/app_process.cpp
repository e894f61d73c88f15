#include "sim/app_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "sim/child_cleanup.h"

namespace hushwall::sim {
namespace {

// What /proc/PID/stat says of a process: its state (after the command name
// in parentheses, the first field) and the processor time it has used, user
// and system, in clock ticks (the 12th and 13th fields). Nothing once the
// process is gone.
struct Usage {
  char state = 0;
  unsigned long long ticks = 0;
};

Usage usageOf(pid_t pid) {
  std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
  std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
  Usage usage;
  std::size_t close = text.rfind(')');
  if (close == std::string::npos) return usage;
  std::istringstream fields(text.substr(close + 1));
  std::string field;
  for (int i = 1; i <= 13 && fields >> field; ++i) {
    if (i == 1) usage.state = field[0];
    if (i >= 12) usage.ticks += std::strtoull(field.c_str(), nullptr, 10);
  }
  return usage;
}

}  // namespace

AppProcess::AppProcess(std::string name, const std::vector<std::string>& argv, std::string logFile)
    : name_(std::move(name)), logFile_(std::move(logFile)) {
  int in[2], out[2];
  if (::pipe2(in, O_CLOEXEC) != 0) throw std::runtime_error("cannot start " + name_ + ": no pipe");
  if (::pipe2(out, O_CLOEXEC) != 0) {
    ::close(in[0]);
    ::close(in[1]);
    throw std::runtime_error("cannot start " + name_ + ": no pipe");
  }
  int log = ::open(logFile_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  std::vector<char*> args;
  for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
  args.push_back(nullptr);
  pid_ = ::fork();
  if (pid_ == 0) {
    ::dup2(in[0], STDIN_FILENO);
    ::dup2(out[1], STDOUT_FILENO);
    if (log >= 0) ::dup2(log, STDERR_FILENO);
    ::execv(args[0], args.data());
    ::_exit(127);
  }
  ::close(in[0]);
  ::close(out[1]);
  if (log >= 0) ::close(log);
  toChild_ = in[1];
  fromChild_ = out[0];
  if (pid_ < 0) {
    status_ = 0;
    throw std::runtime_error("cannot start " + name_ + ": " + std::strerror(errno));
  }
  watchChild(pid_);
  reader_.emplace(fromChild_);
}

AppProcess::~AppProcess() {
  if (!status_) {
    ::kill(pid_, SIGKILL);
    reap(true);
  }
  if (toChild_ >= 0) ::close(toChild_);
  if (fromChild_ >= 0) ::close(fromChild_);
}

void AppProcess::reap(bool block) {
  if (status_) return;
  int status = 0;
  pid_t done;
  while ((done = ::waitpid(pid_, &status, block ? 0 : WNOHANG)) < 0 && errno == EINTR) {
  }
  if (done == pid_ || done < 0) {
    status_ = status;
    forgetChild(pid_);
  }
}

std::optional<unsigned long long> AppProcess::activity() const {
  const Usage usage = usageOf(pid_);
  // Running, or waiting for the disk (a commit's sync, which may take long
  // on a busy machine): working either way.
  if (usage.state == 'R' || usage.state == 'D') return std::nullopt;
  unsigned long long total = usage.ticks;
  std::ifstream io("/proc/" + std::to_string(pid_) + "/io");
  std::string key;
  unsigned long long value = 0;
  while (io >> key >> value) {
    if (key == "rchar:" || key == "wchar:") total += value;
  }
  return total;
}

double AppProcess::processorSeconds() const {
  return static_cast<double>(usageOf(pid_).ticks) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

std::optional<nlohmann::json> AppProcess::awaitReply(const ReplyWait& wait) {
  using Clock = std::chrono::steady_clock;
  constexpr auto kReportEvery = std::chrono::seconds(5);
  const auto start = Clock::now();
  auto lastProgress = start, nextReport = start + kReportEvery;
  const double processorAtStart = wait.progress ? processorSeconds() : 0;
  std::optional<unsigned long long> seen = activity();
  const int slice = std::max(1, std::min(wait.idleMs / 4, 1000));
  owesReply_ = true;
  std::string line;
  for (;;) {
    switch (reader_->readLine(line, slice)) {
      case LineReader::Status::kLine: {
        owesReply_ = false;
        nlohmann::json reply = nlohmann::json::parse(line, nullptr, false);
        if (reply.is_discarded() || !reply.is_object()) {
          throw std::runtime_error(name_ + " answered with something that is no JSON object: " + line);
        }
        return reply;
      }
      case LineReader::Status::kEnd:
        owesReply_ = false;
        reap(true);
        return std::nullopt;
      case LineReader::Status::kTimeout:
        break;
    }
    const auto now = Clock::now();
    const std::optional<unsigned long long> active = activity();
    if (!active || active != seen) lastProgress = now;
    seen = active;
    auto ms = [](Clock::duration d) {
      return std::chrono::duration_cast<std::chrono::milliseconds>(d).count();
    };
    if (ms(now - lastProgress) >= wait.idleMs) {
      throw std::runtime_error(name_ + " did not answer and did no work for " +
                               std::to_string(wait.idleMs / 1000.0).substr(0, 4) + " s");
    }
    if (ms(now - start) >= wait.totalMs) {
      throw std::runtime_error(name_ + " did not answer within " +
                               std::to_string(wait.totalMs / 1000) + " s, although it kept working");
    }
    if (wait.progress && now >= nextReport) {
      nextReport += kReportEvery;
      wait.progress(ms(now - start) / 1000.0, processorSeconds() - processorAtStart);
    }
  }
}

std::optional<nlohmann::json> AppProcess::request(const nlohmann::json& message,
                                                  const ReplyWait& wait) {
  if (status_ || !writeLine(toChild_, message)) {
    reap(true);
    return std::nullopt;
  }
  return awaitReply(wait);
}

void AppProcess::waitForExit(int timeoutMs) {
  ::close(toChild_);  // end of input ends a process that is still serving
  toChild_ = -1;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!status_ && std::chrono::steady_clock::now() < deadline) {
    reap(false);
    if (!status_) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  if (!status_) {
    ::kill(pid_, SIGKILL);
    reap(true);
  }
}

std::string AppProcess::howItEnded() {
  reap(true);
  std::string how;
  if (WIFSIGNALED(*status_)) {
    how = "killed by signal " + std::to_string(WTERMSIG(*status_)) + " (" +
          ::strsignal(WTERMSIG(*status_)) + ")";
  } else {
    how = "exited with status " + std::to_string(WEXITSTATUS(*status_));
  }
  // What the process said last (for an uncaught exception: its type, then
  // its text).
  std::ifstream log(logFile_);
  std::string line, said[2];
  while (std::getline(log, line)) {
    line.erase(0, line.find_first_not_of(" \t"));
    if (line.empty()) continue;
    said[0] = std::move(said[1]);
    said[1] = line;
  }
  for (const std::string& part : said) {
    if (!part.empty()) how += (how.find(": ") == std::string::npos ? ": " : "; ") + part;
  }
  return how;
}

}  // namespace hushwall::sim
