#!/usr/bin/env bash
# Installs what the project needs, builds it, and runs the whole test suite.
# The reliability tests' figures (rows stored and lost, faults survived) are
# printed at the end.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
"$here/scripts/install-deps.sh"
"$here/scripts/build.sh"
build=${HUSHWALL_BUILD_DIR:-$here/build}
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
grep -h "^hushwall-figure:" "$build/Testing/Temporary/LastTest.log" || true
