#!/usr/bin/env bash
# The Ansible collection against the live agent, run only inside the
# namespace sandbox (tests/support/nv-sandbox.sh): first run changes the
# sandbox's firewall, sysctl and host name (read back with iptables -S,
# sysctl, hostname), second run changes nothing, check and diff mode show a
# change made by hand without undoing it.
# Usage: nv-sandbox.sh -- run-live.sh BIN_DIR SOURCE_DIR   (77: not in the sandbox)
set -euo pipefail
bin=$1
src=$2
if [ "${NV_SANDBOX:-}" != 1 ] || [ ! -e /sys/class/net/nv0 ]; then
  echo "runs only inside tests/support/nv-sandbox.sh"
  exit 77
fi
command -v ansible-playbook >/dev/null || { echo "ansible-playbook is not installed"; exit 77; }

work=$(mktemp -d)
agent=
cleanup() {
  if [ -n "$agent" ]; then kill "$agent" 2>/dev/null || true; wait "$agent" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT
export HOME=$work/home ANSIBLE_LOCAL_TEMP=$work/tmp ANSIBLE_REMOTE_TEMP=$work/tmp
export ANSIBLE_COLLECTIONS_PATH=$src ANSIBLE_NOCOLOR=1 ANSIBLE_PYTHON_INTERPRETER=/usr/bin/python3
export ANSIBLE_RETRY_FILES_ENABLED=0
mkdir -p "$HOME" "$work/tmp" "$work/data"

iptables -w 5 -F INPUT
iptables -w 5 -P INPUT ACCEPT
sysctl -qw net.ipv4.tcp_syncookies=0
"$bin/norvaned" --foreground --backend system --data-dir "$work/data" --socket "$work/sock" \
  --journal "$work/journal" 2>"$work/agent.err" &
agent=$!
for _ in $(seq 100); do [ -S "$work/sock" ] && break; sleep 0.05; done
[ -S "$work/sock" ] || { echo "norvaned did not start"; cat "$work/agent.err"; exit 1; }

printf 'web08 ansible_connection=local nv_hostname=web08\n' >"$work/inventory"
play() { ansible-playbook -i "$work/inventory" -e "nv_nvcmd=$bin/nvcmd nv_socket=$work/sock" "$@"; }
fail() { echo "FAIL: $*"; exit 1; }
recap() { grep -E '^web08 +:' "$1"; }

play "$src/tests/ansible/live.yml" >"$work/run1" 2>&1 || { cat "$work/run1"; fail "first run"; }
recap "$work/run1" | grep -q 'changed=1' || { cat "$work/run1"; fail "the first run changes"; }
rules=$(iptables -w 5 -S)
grep -q -- '-P INPUT DROP' <<<"$rules" || fail "input policy: $rules"
grep -q -- '-s 10.77.0.0/24 .*--dport 22 .*-j ACCEPT' <<<"$rules" || fail "ssh rule: $rules"
grep -q -- '--dport 443 .*-j ACCEPT' <<<"$rules" || fail "https rule: $rules"
[ "$(sysctl -n net.ipv4.tcp_syncookies)" = 1 ] || fail "tcp_syncookies"
[ "$(hostname)" = web08 ] || fail "host name $(hostname)"

play "$src/tests/ansible/live.yml" >"$work/run2" 2>&1 || { cat "$work/run2"; fail "second run"; }
recap "$work/run2" | grep -q 'changed=0' || { cat "$work/run2"; fail "the second run changes nothing"; }
[ "$(iptables -w 5 -S)" = "$rules" ] || fail "the second run left the firewall"

sysctl -qw net.ipv4.tcp_syncookies=0
play "$src/tests/ansible/live.yml" --check --diff >"$work/run3" 2>&1 || { cat "$work/run3"; fail "check run"; }
recap "$work/run3" | grep -q 'changed=1' || { cat "$work/run3"; fail "check mode reports the change"; }
grep -q '"tcp_syncookies": false' "$work/run3" || { cat "$work/run3"; fail "the diff shows the old value"; }
[ "$(sysctl -n net.ipv4.tcp_syncookies)" = 0 ] || fail "check mode changed the kernel"

play "$src/tests/ansible/live.yml" >"$work/run4" 2>&1 || { cat "$work/run4"; fail "repair run"; }
[ "$(sysctl -n net.ipv4.tcp_syncookies)" = 1 ] || fail "the repair run sets the kernel again"
echo "ansible collection against the live agent: all checks passed"
