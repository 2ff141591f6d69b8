#!/usr/bin/env bash
# Times nvcmd apply of a large document on an empty simulator: 1,000
# firewall rules (600 input, 400 output) and 200 monitored paths. The first
# run sends every command (each saved by the agent with fsync); the runs
# after it find nothing to do and send nothing (median of RUNS, default 9).
# Usage: [RUNS=N] scripts/bench-apply.sh [BUILD_DIR]   (default: build)
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build}"
runs="${RUNS:-9}"
work=$(mktemp -d)
agent=
cleanup() {
  if [ -n "$agent" ]; then kill "$agent" 2>/dev/null || true; wait "$agent" 2>/dev/null || true; fi
  [ -n "${NV_KEEP:-}" ] || rm -rf "$work"
}
trap cleanup EXIT

python3 - "$work/doc.yaml" <<'PY'
import sys
out = ["firewall:"]
for chain, n, base in (("input", 600, 1000), ("output", 400, 20000)):
    out += ["  %s:" % chain, "    policy: accept", "    rules:"]
    for i in range(n):
        proto = "udp" if i % 5 == 0 else "tcp"
        src = "10.%d.%d.0/24" % (i // 250, i % 250)
        out.append("      - {proto: %s, src: %s, dport: %d, action: accept}" % (proto, src, base + i))
out += ["monitors:", "  files:", "    enabled: true", "    paths:"]
out += ["      - /srv/data/site-%03d/config.yml" % i for i in range(200)]
open(sys.argv[1], "w").write("\n".join(out) + "\n")
PY

"$build/bin/norvaned" --foreground --socket "$work/sock" --state "$work/state.json" 2>/dev/null &
agent=$!
for _ in $(seq 100); do [ -S "$work/sock" ] && break; sleep 0.05; done
export NVUI_SOCKET=$work/sock NVUI_LOG=$work/nvui.log

ms() { echo $(( ($2 - $1) / 1000000 )).$(( ($2 - $1) / 10000 % 100 )); }
t0=$(date +%s%N)
rc=0; "$build/bin/nvcmd" apply "$work/doc.yaml" >"$work/first" || rc=$?
t1=$(date +%s%N)
[ "$rc" -eq 2 ] || { echo "first apply: exit $rc"; tail -3 "$work/first"; exit 1; }
echo "first apply (empty server, $(grep -c . "$work/doc.yaml") lines): $(ms "$t0" "$t1") ms; $(tail -1 "$work/first")"

times=()
for _ in $(seq "$runs"); do
  t0=$(date +%s%N)
  rc=0; "$build/bin/nvcmd" apply "$work/doc.yaml" >"$work/again" || rc=$?
  t1=$(date +%s%N)
  [ "$rc" -eq 0 ] || { echo "second apply: exit $rc"; tail -3 "$work/again"; exit 1; }
  times+=("$(( (t1 - t0) / 1000 ))")
done
sorted=$(printf '%s\n' "${times[@]}" | sort -n)
median=$(echo "$sorted" | sed -n "$(( (runs + 1) / 2 ))p")
echo "apply again (nothing to do, $runs runs): median $(( median / 1000 )).$(( median / 10 % 100 )) ms," \
  "fastest $(( $(echo "$sorted" | head -1) / 1000 )) ms, slowest $(( $(echo "$sorted" | tail -1) / 1000 )) ms"
