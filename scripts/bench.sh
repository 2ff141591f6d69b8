#!/usr/bin/env bash
# Builds the benchmarks in Release (build-bench, or BUILD_DIR) and runs the
# check round-trip benchmark, which ends with a summary table of median and
# tail round-trip times in microseconds. Extra arguments go to the benchmark
# (for example --benchmark_filter=check/).
#
# Usage: scripts/bench.sh [BUILD_DIR] [--benchmark_... arguments]
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
cmake --build "$build" -j"$(nproc)" --target bench_check_roundtrip norvaned

echo "== bench_check_roundtrip ($(nproc) CPUs, $(uname -r)) =="
"$build/bin/bench_check_roundtrip" "$@"
