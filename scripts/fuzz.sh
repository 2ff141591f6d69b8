#!/usr/bin/env bash
# Runs each libFuzzer target for a bounded time on a temporary copy of its
# seed corpus (tests/fuzz/corpus/<target>) and prints a one-line summary per
# target. Exits non-zero when any target finds a crash, a leak, a timeout or
# an out-of-memory; the reproducers are kept in BUILD_DIR/fuzz-artifacts/.
#
# Usage: scripts/fuzz.sh BUILD_DIR [SECONDS]   (SECONDS per target, default 30)
# BUILD_DIR is a tree configured with -DNV_FUZZ=ON -DCMAKE_CXX_COMPILER=clang++;
# when it does not hold the targets yet they are configured and built here.
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
if [ $# -lt 1 ]; then
  echo "usage: scripts/fuzz.sh BUILD_DIR [SECONDS]" >&2
  exit 2
fi
build="$1"
seconds="${2:-30}"
targets=(fuzz_answer_decoder fuzz_request_decoder fuzz_state_roundtrip fuzz_ipv4_parse fuzz_ifname_parse)

missing=0
for t in "${targets[@]}"; do
  [ -x "$build/bin/$t" ] || missing=1
done
if [ $missing -eq 1 ]; then
  echo "fuzz: building the targets in $build"
  if [ ! -f "$build/CMakeCache.txt" ]; then
    cmake -S "$root" -B "$build" -DNV_FUZZ=ON -DNV_BENCH=OFF -DCMAKE_CXX_COMPILER=clang++ \
      -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
  fi
  cmake --build "$build" -j"$(nproc)" --target "${targets[@]}"
fi

work="$(mktemp -d "${TMPDIR:-/tmp}/nvfuzz.XXXXXX")"
trap 'rm -rf "$work"' EXIT

status=0
printf '%-22s %8s %12s %8s %8s  %s\n' target seconds executions cov features result
for t in "${targets[@]}"; do
  corpus="$work/$t/corpus"
  artifacts="$build/fuzz-artifacts/$t"
  log="$work/$t/log"
  mkdir -p "$corpus" "$artifacts"
  cp -R "$root/tests/fuzz/corpus/$t/." "$corpus/"
  rc=0
  "$build/bin/$t" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=30 \
    -print_final_stats=1 -artifact_prefix="$artifacts/" "$corpus" >"$log" 2>&1 || rc=$?
  execs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n1)"
  last="$(grep -E '^#[0-9]+' "$log" | tail -n1 || true)"
  cov="$(sed -n 's/.* cov: \([0-9]*\).*/\1/p' <<<"$last")"
  ft="$(sed -n 's/.* ft: \([0-9]*\).*/\1/p' <<<"$last")"
  if [ $rc -eq 0 ]; then
    result=ok
  else
    result="FAILED (exit $rc)"
    status=1
  fi
  printf '%-22s %8s %12s %8s %8s  %s\n' "$t" "$seconds" "${execs:--}" "${cov:--}" "${ft:--}" \
    "$result"
  if [ $rc -ne 0 ]; then
    cp "$log" "$artifacts/last-run.log"
    echo "---- $t: end of the log (whole log: $artifacts/last-run.log) ----"
    tail -n 60 "$log"
    echo "---- reproducers in $artifacts: $(ls "$artifacts" | grep -v '^last-run.log$' | tr '\n' ' ')"
  fi
done
exit $status
