#!/usr/bin/env bash
# Builds the benchmarks in Release (build-bench, or BUILD_DIR) and runs them:
# the check round-trip benchmark, which ends with a summary table of median
# and tail round-trip times in microseconds (extra arguments go to it, for
# example --benchmark_filter=check/), then the console benchmark, which
# starts nvui and dialog in a pseudo-terminal CONSOLE_RUNS times each
# (default 25) and prints medians of start-up, key redraw and peak memory.
# bench_agent_load and bench_list_parse (a 1 MiB list) run in between.
# CONSOLE_RUNS=0 skips the console benchmark.
#
# Usage: [CONSOLE_RUNS=N] scripts/bench.sh [BUILD_DIR] [--benchmark_... arguments]
# Round trips cross between the two processes' CPUs; on a small VM the
# wake-up across virtual CPUs is a large part of a short round trip, so
# figures also depend on the load and on CPU placement (compare with
# "taskset -c 0 scripts/bench.sh").
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build-bench"
if [ $# -gt 0 ] && [ "${1#--}" = "$1" ]; then
  build="$1"
  shift
fi

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DNV_BENCH=ON -DNV_SANITIZE=OFF \
  -DNV_FUZZ=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target bench_check_roundtrip bench_agent_load bench_list_parse bench_console \
  norvaned nvui

echo "== bench_check_roundtrip ($(nproc) CPUs, $(uname -r)) =="
"$build/bin/bench_check_roundtrip" "$@"

echo "== bench_agent_load =="
"$build/bin/bench_agent_load"

echo "== bench_list_parse =="
"$build/bin/bench_list_parse"

# The console's figures are wall-clock times of whole processes: other load
# on the machine shows in them (the load average is printed with them; the
# start CPU column is the steadier one).
runs="${CONSOLE_RUNS:-25}"
if [ "$runs" != "0" ]; then
  if ! command -v dialog >/dev/null 2>&1; then
    echo "bench: dialog is not installed (scripts/deps.sh installs it); nvui is measured alone"
  fi
  "$build/bin/bench_console" "$runs"
fi
