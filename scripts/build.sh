#!/usr/bin/env bash
# Configures and builds Hushwall into build/ (or $HUSHWALL_BUILD_DIR).
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${HUSHWALL_BUILD_DIR:-$here/build}
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j"$(nproc)"
