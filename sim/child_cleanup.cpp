#include "sim/child_cleanup.h"

#include <signal.h>

#include <atomic>
#include <initializer_list>

namespace hushwall::sim {
namespace {

constexpr int kSlots = 16;
std::atomic<pid_t> children[kSlots];

void killChildren(int signal) {
  for (auto& child : children) {
    pid_t pid = child.load();
    if (pid > 0) ::kill(pid, SIGKILL);
  }
  ::signal(signal, SIG_DFL);
  ::raise(signal);
}

}  // namespace

void installChildCleanup() {
  ::signal(SIGPIPE, SIG_IGN);
  for (int s : {SIGINT, SIGTERM, SIGHUP}) ::signal(s, killChildren);
}

void watchChild(pid_t pid) {
  for (auto& child : children) {
    pid_t empty = 0;
    if (child.compare_exchange_strong(empty, pid)) return;
  }
}

void forgetChild(pid_t pid) {
  for (auto& child : children) {
    pid_t expected = pid;
    child.compare_exchange_strong(expected, 0);
  }
}

}  // namespace hushwall::sim
