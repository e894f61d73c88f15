// The library's entry point: the dynamic loader runs this once when the
// library is loaded into a process, before the host's own start-up code uses
// the classes it hooks. Nothing else starts Hushwall.
//
// Built only into the shared library, never into the test binaries that
// link the logic directly.
#include "startup/start_up.h"

__attribute__((constructor)) static void HushwallLoad() { hushwall::HushwallStartUp(); }
