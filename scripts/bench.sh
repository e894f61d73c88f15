#!/usr/bin/env bash
# Builds and runs the benchmarks, then prints the table of figures: each
# figure with its baseline measured in the same run, medians over
# repetitions, ratios taken repetition by repetition (bench/README.md).
#
#   scripts/bench.sh          the full run: published sizes, 5 repetitions,
#                             a Release build in build-bench/ (or
#                             $HUSHWALL_BENCH_BUILD_DIR); takes minutes
#   scripts/bench.sh --tiny   for CI: tiny sizes, 2 short repetitions, in the
#                             build the tests use (build/ or
#                             $HUSHWALL_BUILD_DIR); takes seconds
#
# A repetition is one run of each benchmark program (--benchmark_repetitions=1
# per run), in which every figure runs right before its baseline; so the two
# halves of each pair see the same machine, and a busy moment spoils one pair,
# not a whole side. The JSON output of every run stays in
# <build>/bench-results/. Exits non-zero when a benchmark fails or a figure is
# missing; a goal that is not met is shown in the table, not in the exit
# status.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)

tiny=false
case "${1:-}" in
  --tiny) tiny=true ;;
  "") ;;
  *) echo "usage: scripts/bench.sh [--tiny]" >&2; exit 1 ;;
esac

"$here/scripts/install-deps.sh" >&2

if $tiny; then
  build=${HUSHWALL_BUILD_DIR:-$here/build}
  # The tests' build as it is configured: only the benchmark targets are added.
  cmake -S "$here" -B "$build" -DHUSHWALL_BENCH=ON >/dev/null
  sizes=(--tiny)
  repetitions=2
  run=(--benchmark_min_time=0.01)
else
  build=${HUSHWALL_BENCH_BUILD_DIR:-$here/build-bench}
  cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=Release -DHUSHWALL_BENCH=ON >/dev/null
  sizes=()
  repetitions=5
  run=(--benchmark_min_time=0.5)
fi
cmake --build "$build" -j"$(nproc)" \
  --target hushwall-bench-model hushwall-bench-hooks hushwall-bench-report >&2

results="$build/bench-results"
rm -rf "$results"
mkdir -p "$results"
outputs=()
for ((repetition = 1; repetition <= repetitions; repetition++)); do
  for program in model hooks; do
    out="$results/$program-$repetition"
    echo "bench: repetition $repetition of $repetitions: hushwall-bench-$program" >&2
    if ! "$build/bench/hushwall-bench-$program" "${sizes[@]}" "${run[@]}" \
        --benchmark_repetitions=1 --benchmark_out_format=json --benchmark_out="$out.json" \
        >"$out.log" 2>&1; then
      cat "$out.log" >&2
      echo "bench: hushwall-bench-$program failed" >&2
      exit 1
    fi
    outputs+=("$out.json")
  done
done

cpu=$(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2- | sed 's/^ *//')
echo "Machine: $(nproc) CPUs, ${cpu:-unknown CPU}; $(date -u '+%Y-%m-%d %H:%M UTC');" \
  "$(if $tiny; then echo "tiny sizes"; else echo "full sizes"; fi)"
echo
"$build/bench/hushwall-bench-report" "${sizes[@]}" "${outputs[@]}"
