#!/usr/bin/env bash
# Configures and builds Hushwall into build/ (or $HUSHWALL_BUILD_DIR).
#
# Optimised, without debug information: neither the tests nor the demo need
# it, and on CI's two cores it costs a third more build time. Crashes under
# test are reported with file and line by the instrumented build
# (scripts/test-sanitized.sh); a developer's own `cmake -B` build defaults to
# RelWithDebInfo.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${HUSHWALL_BUILD_DIR:-$here/build}
flags="-O2 -DNDEBUG"
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_C_FLAGS_RELEASE="$flags" -DCMAKE_CXX_FLAGS_RELEASE="$flags" \
  -DCMAKE_OBJCXX_FLAGS_RELEASE="$flags" >/dev/null
cmake --build "$build" -j"$(nproc)"
