#!/usr/bin/env bash
# Builds the libFuzzer targets in the instrumented clang build that the
# sanitized test run uses (build-asan/ or $HUSHWALL_ASAN_BUILD_DIR; see
# scripts/configure-sanitized.sh) and runs each for SECONDS (default 20), starting
# from the seeds in fuzz/corpus/<target>/. New inputs that the fuzzer finds
# stay in the build directory; the seeds in the repository are not touched.
# A crash or a failed check fails the script and leaves the input under
# <build>/artifacts/<target>/. A longer run: scripts/fuzz.sh 600
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-20}
"$here/scripts/install-deps.sh"
build=$("$here/scripts/configure-sanitized.sh")

targets=(notification_text bulletin_context settings_file unformatted_number scenario picture_path json_values
         vcard command_line database_rows display_text macho chat_search)
cmake --build "$build" -j"$(nproc)" --target "${targets[@]/#/fuzz_}"

export LSAN_OPTIONS="suppressions=$here/scripts/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
# Long enough for inputs nested hundreds of thousands of levels deep, where
# recursive code runs out of stack; libFuzzer still starts with short inputs
# and lengthens them as coverage grows.
max_len=300000
status=0
for target in "${targets[@]}"; do
  corpus="$build/corpus/$target"
  artifacts="$build/artifacts/$target/"
  log="$build/fuzz-$target.log"
  mkdir -p "$corpus" "$artifacts"
  if "$build/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=10 -max_len="$max_len" \
      -print_final_stats=1 \
      -artifact_prefix="$artifacts" "$corpus" "$here/fuzz/corpus/$target" >"$log" 2>&1; then
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    echo "hushwall-figure: fuzz $target: ${runs:-?} executions in ${seconds} s, no failure"
  else
    echo "fuzz: $target FAILED; the input is in $artifacts, the log in $log:" >&2
    tail -40 "$log" >&2
    status=1
  fi
done
exit $status
