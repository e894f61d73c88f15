// The simulator's children (the bus daemon and the app processes) must not
// outlive it. Normal endings and exceptions stop them through destructors;
// this covers the endings that run no destructor: SIGINT, SIGTERM, SIGHUP.
// The handler may only use async-signal-safe calls, so the pids live in a
// fixed table of atomics, the one process-wide state of the simulator.
#ifndef HUSHWALL_SIM_CHILD_CLEANUP_H_
#define HUSHWALL_SIM_CHILD_CLEANUP_H_

#include <sys/types.h>

namespace hushwall::sim {

// Installs the handlers (once); also ignores SIGPIPE, so that a child that
// died shows up as a failed write instead of ending the simulator.
void installChildCleanup();
// A child to kill should the simulator be stopped by a signal.
void watchChild(pid_t pid);
// The child has been reaped; its pid may be reused.
void forgetChild(pid_t pid);

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_CHILD_CLEANUP_H_
