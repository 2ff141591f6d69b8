#!/usr/bin/env bash
# The Ansible collection against a simulator on a private socket, with the
# local connection: first run changes, second run changes nothing, check and
# diff mode change nothing and show the change, a refused item fails the
# task with the agent's answer, the facts module reads the result, the
# collection builds and its documentation renders.
# Usage: run.sh BIN_DIR SOURCE_DIR   (exit 77: ansible-playbook is missing)
set -euo pipefail
bin=$1
src=$2
command -v ansible-playbook >/dev/null || { echo "ansible-playbook is not installed"; exit 77; }

work=$(mktemp -d)
agent=
cleanup() {
  if [ -n "$agent" ]; then kill "$agent" 2>/dev/null || true; wait "$agent" 2>/dev/null || true; fi
  [ -n "${NV_KEEP:-}" ] || rm -rf "$work"
}
trap cleanup EXIT

export HOME=$work/home ANSIBLE_LOCAL_TEMP=$work/tmp ANSIBLE_REMOTE_TEMP=$work/tmp
export ANSIBLE_COLLECTIONS_PATH=$src ANSIBLE_NOCOLOR=1 ANSIBLE_FORCE_COLOR=0
export ANSIBLE_PYTHON_INTERPRETER=/usr/bin/python3 ANSIBLE_RETRY_FILES_ENABLED=0
mkdir -p "$HOME" "$work/tmp"

cp "$src/data/demo-state.json" "$work/state.json"
"$bin/norvaned" --foreground --socket "$work/sock" --state "$work/state.json" \
  --journal "$work/journal" 2>"$work/agent.err" &
agent=$!
for _ in $(seq 100); do [ -S "$work/sock" ] && break; sleep 0.05; done
[ -S "$work/sock" ] || { echo "norvaned did not start"; cat "$work/agent.err"; exit 1; }

printf 'web07 ansible_connection=local nv_hostname=web07\n' >"$work/inventory"
vars="nv_nvcmd=$bin/nvcmd nv_socket=$work/sock"
play() { ansible-playbook -i "$work/inventory" -e "$vars" "$@"; }
fail() { echo "FAIL: $*"; exit 1; }
recap() { grep -E '^web07 +:' "$1"; }
sets() { grep -vc '"cmd": 1,' "$work/journal" || true; }

play "$src/tests/ansible/site.yml" >"$work/run1" 2>&1 || { cat "$work/run1"; fail "first run"; }
recap "$work/run1" | grep -q 'changed=1' || { cat "$work/run1"; fail "the first run changes"; }
n1=$(sets)
[ "$n1" -gt 0 ] || fail "the first run sent set commands"

play "$src/tests/ansible/site.yml" >"$work/run2" 2>&1 || { cat "$work/run2"; fail "second run"; }
recap "$work/run2" | grep -q 'changed=0' || { cat "$work/run2"; fail "the second run changes nothing"; }
[ "$(sets)" -eq "$n1" ] || fail "the second run sent no set command"

# Someone changes the host name by hand: check and diff show it, send nothing.
NVUI_SOCKET=$work/sock NVUI_LOG=$work/nvui.log "$bin/nvcmd" send 57 handmade >/dev/null
n2=$(sets)
play "$src/tests/ansible/site.yml" --check --diff >"$work/run3" 2>&1 || { cat "$work/run3"; fail "check run"; }
recap "$work/run3" | grep -q 'changed=1' || { cat "$work/run3"; fail "check mode reports the change"; }
grep -q '"hostname": "handmade"' "$work/run3" || { cat "$work/run3"; fail "the diff shows the old host name"; }
grep -q '"hostname": "web07"' "$work/run3" || { cat "$work/run3"; fail "the diff shows the new host name"; }
[ "$(sets)" -eq "$n2" ] || fail "check mode sent a set command"
NVUI_SOCKET=$work/sock NVUI_LOG=$work/nvui.log "$bin/nvcmd" check >"$work/state.now"
grep -q '"sHostname": "handmade"' "$work/state.now" || fail "check mode left the host name"

play "$src/tests/ansible/site.yml" >"$work/run4" 2>&1 || { cat "$work/run4"; fail "repair run"; }
recap "$work/run4" | grep -q 'changed=1' || { cat "$work/run4"; fail "the repair run changes"; }
play "$src/tests/ansible/facts.yml" >"$work/facts" 2>&1 || { cat "$work/facts"; fail "facts"; }

n3=$(sets)
if play "$src/tests/ansible/fail.yml" >"$work/fail" 2>&1; then cat "$work/fail"; fail "a refused item fails"; fi
grep -q 'There is no interface named eth9.' "$work/fail" || { cat "$work/fail"; fail "the agent's detail"; }
recap "$work/fail" | grep -q 'failed=1' || { cat "$work/fail"; fail "the task failed"; }
play "$src/tests/ansible/refused.yml" >"$work/refused" 2>&1 || { cat "$work/refused"; fail "the refusal names the path"; }
[ "$(sets)" -eq "$((n3 + 1))" ] || fail "only the refused interface was sent"

# The example fleet playbook: two servers, one run brings both to the same
# settings with their own host names; a second run changes nothing.
fleet=()
for h in web01 web02; do
  cp "$src/data/demo-state.json" "$work/$h.json"
  "$bin/norvaned" --foreground --socket "$work/$h.sock" --state "$work/$h.json" 2>/dev/null &
  fleet+=($!)
  printf '%s ansible_connection=local ansible_become=false nv_hostname=%s nv_socket=%s\n' \
    "$h" "$h" "$work/$h.sock" >>"$work/fleet.ini"
done
stop_fleet() { for p in "${fleet[@]}"; do kill "$p" 2>/dev/null || true; wait "$p" 2>/dev/null || true; done; }
trap 'stop_fleet; cleanup' EXIT
sed -i '1i [web]' "$work/fleet.ini"
for h in web01 web02; do
  for _ in $(seq 100); do [ -S "$work/$h.sock" ] && break; sleep 0.05; done
done
fleetplay() {
  ansible-playbook -i "$work/fleet.ini" -e "nv_nvcmd=$bin/nvcmd" \
    "$src/ansible_collections/norvane/server/examples/fleet.yml" >"$work/$1" 2>&1 ||
    { cat "$work/$1"; fail "fleet playbook"; }
}
fleetplay fleet1
[ "$(grep -cE '^web0[12] +: .*changed=1' "$work/fleet1")" -eq 2 ] || { cat "$work/fleet1"; fail "the fleet changes"; }
for h in web01 web02; do
  NVUI_SOCKET=$work/$h.sock NVUI_LOG=$work/nvui.log "$bin/nvcmd" export >"$work/$h.yml"
  grep -q "^hostname: $h\$" "$work/$h.yml" || { cat "$work/$h.yml"; fail "$h has its own host name"; }
done
[ "$(sed 1d "$work/web01.yml")" = "$(sed 1d "$work/web02.yml")" ] || fail "both servers have the same settings"
fleetplay fleet2
[ "$(grep -cE '^web0[12] +: .*changed=0' "$work/fleet2")" -eq 2 ] || { cat "$work/fleet2"; fail "the fleet's second run"; }
stop_fleet

(cd "$src/ansible_collections/norvane/server" &&
  ansible-galaxy collection build --output-path "$work/build" >"$work/build.log" 2>&1) ||
  { cat "$work/build.log"; fail "ansible-galaxy collection build"; }
ls "$work/build"/norvane-server-*.tar.gz >/dev/null || fail "the collection archive"
ansible-doc norvane.server.settings >"$work/doc" 2>&1 || { cat "$work/doc"; fail "ansible-doc"; }
grep -q 'OPTIONS' "$work/doc" || fail "ansible-doc renders the options"
ansible-doc norvane.server.facts >/dev/null 2>&1 || fail "ansible-doc facts"
echo "ansible collection: all checks passed"
