#!/usr/bin/env bash
# Builds everything (libraries, libHushwall.so, host programs, tests) with
# AddressSanitizer and UndefinedBehaviorSanitizer into build-asan/ (or
# $HUSHWALL_ASAN_BUILD_DIR; see scripts/configure-sanitized.sh) and runs the
# whole test suite there. Any
# sanitizer report fails the run, also one from a process whose test passed.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
"$here/scripts/install-deps.sh"
build=$("$here/scripts/configure-sanitized.sh")
cmake --build "$build" -j"$(nproc)"

# SQLite is built without frame pointers: only the slow unwinder gets through
# its frames to the function that made an allocation, which is what the leak
# suppressions name (see scripts/lsan.supp).
export ASAN_OPTIONS="fast_unwind_on_malloc=0:detect_leaks=1:halt_on_error=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export LSAN_OPTIONS="suppressions=$here/scripts/lsan.supp:print_suppressions=0"
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"

log="$build/Testing/Temporary/LastTest.log"
if grep -E "ERROR: (AddressSanitizer|LeakSanitizer)|runtime error:" "$log"; then
  echo "test-sanitized: sanitizer reports in $log" >&2
  exit 1
fi
echo "test-sanitized: no sanitizer reports"
grep -h "^hushwall-figure:" "$log" | sed 's/^hushwall-figure:/sanitized:/' || true
