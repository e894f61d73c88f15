#!/usr/bin/env bash
# Installs what the project needs, builds it, and runs the demonstration.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
"$here/scripts/install-deps.sh"
"$here/scripts/build.sh"
build=${HUSHWALL_BUILD_DIR:-$here/build}
exec "$build/sim/hushwall-sim" demo "$@"
