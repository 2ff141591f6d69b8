#!/usr/bin/env bash
# The demo: builds everything, starts norvaned with the demo state on a
# private socket, and runs the console against it. The state lives in a
# temporary directory that is removed when the console ends.
#
# bash scripts/demo.sh --sandbox runs the console against the live agent
# (norvaned --backend system) inside a throwaway namespace sandbox (private
# /etc, a veth pair with a DHCP server behind it, its own firewall and
# sysctls; see tests/support/nv-sandbox.sh), then leaves a shell in the
# sandbox to read the changes back with ip, iptables -S or sysctl. Needs
# root; the machine itself is not changed. --sandbox --networkd makes
# systemd-networkd the sandbox's network manager instead of ifupdown,
# --sandbox --nm NetworkManager.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = "--in-sandbox" ]; then
  dir=$(mktemp -d /tmp/nvsandbox-demo.XXXXXX)
  build/bin/norvaned --foreground --backend system --socket "$dir/nvsock" \
    --journal "$dir/journal.jsonl" 2>"$dir/norvaned.log" &
  agent=$!
  trap 'kill $agent 2>/dev/null; wait $agent 2>/dev/null; rm -rf "$dir"' EXIT
  for _ in $(seq 100); do [ -S "$dir/nvsock" ] && break; sleep 0.05; done
  export NVUI_SOCKET="$dir/nvsock" NVUI_LOG="$dir/nvui.log"
  export PATH="$PWD/build/bin:$PATH"
  if [ ! -t 0 ] || [ ! -t 1 ]; then
    echo "The console needs a terminal; the sandbox as the live agent reads it:"
    nvcmd check
    exit 0
  fi
  nvui
  echo
  echo "You are in the sandbox (host name $(hostname)); the agent still runs."
  echo "Read the changes back: ip addr, iptables -S, sysctl net.ipv4.tcp_syncookies,"
  echo "cat /etc/hostname, cat /etc/network/interfaces (or, under systemd-networkd,"
  echo "networkctl status nv0, cat /etc/systemd/network/00-norvane-nv0.network;"
  echo "under NetworkManager, nmcli connection show, ls /etc/NetworkManager/system-connections),"
  echo "cat /etc/resolv.conf; run nvui again; exit to leave."
  PS1='nv-sandbox# ' bash --norc -i || true
  exit 0
fi

bash scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)" --target norvaned nvcmd nvui >/dev/null

if [ "${1:-}" = "--sandbox" ]; then
  flags=(--dhcp)
  if [ "${2:-}" = "--networkd" ]; then flags+=(--networkd); fi
  if [ "${2:-}" = "--nm" ]; then flags+=(--nm); fi
  exec bash tests/support/nv-sandbox.sh "${flags[@]}" -- bash scripts/demo.sh --in-sandbox
fi

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
