#!/usr/bin/env bash
# The demo: builds everything, starts norvaned with the demo state on a
# private socket, and runs the console against it. The state lives in a
# temporary directory that is removed when the console ends.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)" --target norvaned nvcmd nvui >/dev/null

dir=$(mktemp -d /tmp/nvdemo.XXXXXX)
cp data/demo-state.json "$dir/state.json"
build/bin/norvaned --foreground --socket "$dir/nvsock" --state "$dir/state.json" \
  --journal "$dir/journal.jsonl" 2>"$dir/norvaned.log" &
agent=$!
trap 'kill $agent 2>/dev/null; wait $agent 2>/dev/null; rm -rf "$dir"' EXIT

for _ in $(seq 100); do [ -S "$dir/nvsock" ] && break; sleep 0.05; done
export NVUI_SOCKET="$dir/nvsock" NVUI_LOG="$dir/nvui.log"

if [ ! -t 0 ] || [ ! -t 1 ]; then
  echo "The console needs a terminal; the agent's state as nvcmd sees it:"
  build/bin/nvcmd check
  exit 0
fi
build/bin/nvui
echo "The console has ended; the agent's journal of this session:"
cat "$dir/journal.jsonl"
