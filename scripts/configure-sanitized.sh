#!/usr/bin/env bash
# Configures the instrumented build shared by scripts/test-sanitized.sh and
# scripts/fuzz.sh, in build-asan/ (or $HUSHWALL_ASAN_BUILD_DIR), and prints
# its path. One clang build with AddressSanitizer, UndefinedBehaviorSanitizer
# and the fuzzer's coverage instrumentation serves both: the test suite runs
# there and the fuzz targets link against the same objects, so CI compiles
# the tree twice (plain and instrumented), not three times.
#
# The benchmarks are left out: they measure the plain build and time nothing
# useful under the sanitizers. Line tables are all the sanitizers need to
# name the file and line of a report, and they build much faster than full
# debug information.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${HUSHWALL_ASAN_BUILD_DIR:-$here/build-asan}
cc=$(command -v clang-14 || command -v clang)
cxx=$(command -v clang++-14 || command -v clang++)
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_C_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only -DNDEBUG" \
  -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only -DNDEBUG" \
  -DHUSHWALL_SANITIZE=ON -DHUSHWALL_FUZZ=ON -DHUSHWALL_BENCH=OFF >/dev/null
echo "$build"
