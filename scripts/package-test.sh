#!/usr/bin/env bash
# Builds the Debian package, runs lintian on it, installs it on this machine
# with dpkg -i, checks every installed file, runs the installed programs on
# the simulator on private sockets, checks what upgrade, removal and purge
# keep and remove, and leaves nothing of the package behind.
#
# Installing must never start the live agent on this machine: where systemd
# runs, a policy-rc.d that refuses the norvane units is put in place for the
# duration of the test (the package's scripts ask it before starting or
# stopping); where systemd does not run, the package starts nothing at
# installation (its init script is registered for boot only).
set -euo pipefail
cd "$(dirname "$0")/.."
SRC=$PWD

SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"
JOBS="$(nproc)"
OUT="$SRC/build-deb"
T="$(mktemp -d /tmp/nvui-pkg.XXXXXX)"
POLICY=/usr/sbin/policy-rc.d
made_policy=0
made_default=0
agents=()

fail() { echo "package-test: FAILED: $*" >&2; exit 1; }
ok() { echo "package-test: ok: $*"; }

cleanup() {
  local pid
  for pid in "${agents[@]}"; do kill "$pid" 2>/dev/null || true; done
  for p in $(pgrep -f "^/usr/sbin/norvaned .*--socket $T/" || true); do kill "$p" 2>/dev/null || true; done
  if dpkg-query -W -f='${Status}' nvui 2>/dev/null | grep -qv 'not-installed'; then
    $SUDO dpkg --purge nvui >/dev/null 2>&1 || true
  fi
  [ $made_policy -eq 1 ] && $SUDO rm -f "$POLICY"
  [ $made_default -eq 1 ] && $SUDO rm -f /etc/default/norvane /run/norvaned.pid
  rm -rf "$T"
}
trap cleanup EXIT

# Nothing of the package may be on the machine before: the purge at the end
# would otherwise remove an administrator's files.
if dpkg-query -W -f='${Status}' nvui 2>/dev/null | grep -q 'install ok'; then
  fail "nvui is installed on this machine; not replacing it"
fi
for f in /etc/norvane /var/log/nvui.log /usr/sbin/norvaned /etc/init.d/norvane /etc/default/norvane; do
  [ ! -e "$f" ] || fail "$f exists before the test; not touching it"
done

echo "== build the package =="
rm -rf "$OUT"
mkdir -p "$OUT/src"
if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
  git ls-files -z --cached --others --exclude-standard | tar --null -T - -cf - | tar -xf - -C "$OUT/src"
else
  tar --exclude='./build*' --exclude=./fuzz-out -cf - . | tar -xf - -C "$OUT/src"
fi
# The same compiler cache as the normal build, when there is one.
if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=ccache; fi
(cd "$OUT/src" && DEB_BUILD_OPTIONS="parallel=$JOBS nocheck" \
  dpkg-buildpackage -b -us -uc >"$OUT/build.log" 2>&1) || { tail -40 "$OUT/build.log"; fail "dpkg-buildpackage"; }
deb=$(ls "$OUT"/nvui_*.deb)
ok "built $(basename "$deb")"

echo "== dependencies =="
# Every pkg-config module the build requires comes from a package named in
# Build-Depends, so that a clean build machine has what the build reads.
bdeps=$(sed -n '/^Build-Depends:/,/^[A-Z]/p' debian/control | tr ',' '\n' | sed 's/^Build-Depends://; s/(.*//; s/[[:space:]]//g' | grep -v '^[A-Z]' | grep -v '^$')
for mod in $(grep -rhoE 'IMPORTED_TARGET( GLOBAL)? [a-z0-9 .+_-]+' --include=CMakeLists.txt src tools CMakeLists.txt |
             sed -E 's/IMPORTED_TARGET( GLOBAL)? //'); do
  pc="$(pkg-config --variable=pcfiledir "$mod")/$mod.pc"
  pkg=$(dpkg -S "$(readlink -f "$pc")" 2>/dev/null | head -1 | cut -d: -f1) || true
  [ -n "$pkg" ] || fail "no package owns $pc"
  grep -qx "$pkg" <<<"$bdeps" || fail "Build-Depends lacks $pkg (for $mod)"
done
for pkg in libnl-3-dev libnl-route-3-dev nlohmann-json3-dev; do
  grep -qx "$pkg" <<<"$bdeps" || fail "Build-Depends lacks $pkg"
done
# What the live agent runs is a dependency of the package.
depends=$(dpkg-deb -f "$deb" Depends)
for pkg in iproute2 iptables passwd; do
  grep -qE "(^|, )$pkg(,| |$)" <<<"$depends" || fail "Depends lacks $pkg: $depends"
done
ok "Build-Depends cover the build's modules; Depends: $depends"

echo "== lintian =="
rc=0
lintian --fail-on error --display-info "$OUT"/nvui_*.changes >"$OUT/lintian.log" 2>&1 || rc=$?
grep -v 'root privileges' "$OUT/lintian.log" || true
[ $rc -eq 0 ] || fail "lintian reports errors"
ok "lintian: no errors ($(grep -c '^W: ' "$OUT/lintian.log" || true) warnings, explained in the README)"

echo "== install =="
if [ -d /run/systemd/system ]; then
  [ ! -e "$POLICY" ] || fail "$POLICY exists; cannot keep the live agent from starting"
  printf '#!/bin/sh\ncase "$1" in norvane|norvane.service|norvane.socket) exit 101 ;; esac\nexit 0\n' |
    $SUDO tee "$POLICY" >/dev/null
  $SUDO chmod 755 "$POLICY"
  made_policy=1
fi
$SUDO dpkg -i "$deb"
if pgrep -f '^/usr/sbin/norvaned' >/dev/null; then fail "installing started the live agent"; fi
ok "installed; no agent started outside the service manager"
[ -d /etc/norvane ] && [ "$($SUDO stat -c '%a %U' /etc/norvane)" = "700 root" ] ||
  fail "/etc/norvane not made by the package with mode 0700"
ok "the package made /etc/norvane, mode 0700"

echo "== installed files =="
for b in /usr/bin/nvui /usr/bin/nvcmd /usr/bin/nvstart /usr/sbin/norvaned; do
  [ -x "$b" ] || fail "$b missing"
done
for m in man1/nvui.1 man1/nvcmd.1 man1/nvstart.1 man8/norvaned.8; do
  page=/usr/share/man/$m.gz
  [ -f "$page" ] || fail "$page missing"
  warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l "$page" 2>&1 >/dev/null)
  [ -z "$warnings" ] || fail "$page renders with warnings: $warnings"
  for section in NAME SYNOPSIS DESCRIPTION OPTIONS ENVIRONMENT FILES 'EXIT STATUS' EXAMPLES; do
    LC_ALL=C.UTF-8 MANWIDTH=80 man -l "$page" 2>/dev/null | grep -q "^$section" || fail "$page: no $section"
  done
done
ok "man pages render without warnings, every section present"
for u in norvane.service norvane.socket; do
  [ -f /lib/systemd/system/$u ] || fail "/lib/systemd/system/$u missing"
done
out=$(systemd-analyze verify /lib/systemd/system/norvane.service /lib/systemd/system/norvane.socket 2>&1) ||
  fail "systemd-analyze verify: $out"
[ -z "$out" ] || fail "systemd-analyze verify: $out"
ok "units pass systemd-analyze verify"
systemd-analyze security --offline=yes /lib/systemd/system/norvane.service 2>/dev/null | tail -1
sh -n /etc/init.d/norvane || fail "init script syntax"
[ -x /etc/init.d/norvane ] || fail "init script not executable"
rc=0; /etc/init.d/norvane status >/dev/null 2>&1 || rc=$?
[ $rc -eq 3 ] || fail "init script status: $rc (3, not running, expected)"
ls /etc/rc2.d/S*norvane >/dev/null 2>&1 || fail "init script not registered for boot"
ok "init script registered, reports the agent not running"
logrotate -d -s "$T/logrotate.state" /etc/logrotate.d/nvui >"$T/logrotate.out" 2>&1 ||
  { cat "$T/logrotate.out"; fail "logrotate file"; }
grep -q '/var/log/nvui.log' "$T/logrotate.out" || fail "logrotate does not read /var/log/nvui.log"
conffiles=$(dpkg-query -W -f='${Conffiles}' nvui)
for c in /etc/init.d/norvane /etc/logrotate.d/nvui; do
  grep -q "$c" <<<"$conffiles" || fail "$c is not a conffile"
done
ok "logrotate file parses; conffiles registered"
[ -f /usr/share/nvui/demo-state.json ] || fail "demo state missing"

echo "== the installed programs on the simulator =="
cp /usr/share/nvui/demo-state.json "$T/state.json"
/usr/sbin/norvaned --foreground --socket "$T/nvsock" --backend sim --state "$T/state.json" \
  2>"$T/norvaned.err" &
agents+=($!)
for _ in $(seq 200); do [ -S "$T/nvsock" ] && break; sleep 0.05; done
export NVUI_SOCKET="$T/nvsock" NVUI_LOG="$T/nvui.log"
host=$(/usr/bin/nvcmd check | jq -r .sHostname)
[ "$host" = "$(jq -r .sHostname "$T/state.json")" ] || fail "nvcmd check: host name '$host'"
/usr/bin/nvcmd send hostname pkgtest01 | grep -q '^Done' || fail "nvcmd send"
[ "$(/usr/bin/nvcmd check | jq -r .sHostname)" = pkgtest01 ] || fail "nvcmd send did not change the state"
usage=$(/usr/bin/nvui -h)
grep -qx 'service norvane start|stop' <<<"$usage" || fail "nvui -h: $usage"
ok "installed norvaned, nvcmd check/send and nvui -h"
# The console itself starts against it in a terminal and draws its menu.
if command -v script >/dev/null; then
  (sleep 3) | TERM=xterm LINES=24 COLUMNS=80 timeout 5 script -qec /usr/bin/nvui /dev/null \
    >"$T/screen.out" 2>&1 || true
  grep -q 'System' "$T/screen.out" || fail "nvui did not draw its screen"
  ok "installed nvui starts in a terminal against the installed agent"
fi
kill "${agents[0]}"; wait "${agents[0]}" || fail "norvaned did not stop cleanly"
[ ! -e "$T/nvsock" ] || fail "norvaned left its socket"
unset NVUI_SOCKET NVUI_LOG

echo "== nvstart without a service manager =="
out=$(/usr/bin/nvstart --socket "$T/nvsock2" -- --backend sim --state "$T/state.json")
[ "$out" = "nvstart: started /usr/sbin/norvaned (simulator backend); norvaned answers on $T/nvsock2." ] || fail "nvstart: $out"
out=$(NVUI_SOCKET="$T/nvsock2" /usr/bin/nvstart -- --backend sim --state "$T/state.json")
[ "$out" = "nvstart: norvaned already answers on $T/nvsock2; nothing started." ] || fail "nvstart again: $out"
n=$(pgrep -fc "^/usr/sbin/norvaned --socket $T/nvsock2 " || true)
[ "$n" = 1 ] || fail "$n agents on the socket after two nvstart"
NVUI_SOCKET="$T/nvsock2" NVUI_LOG="$T/nvui.log" /usr/bin/nvcmd check >/dev/null || fail "check after nvstart"
for p in $(pgrep -f "^/usr/sbin/norvaned --socket $T/nvsock2 " || true); do kill "$p"; done
for _ in $(seq 100); do pgrep -f "^/usr/sbin/norvaned --socket $T/nvsock2 " >/dev/null || break; sleep 0.05; done
ok "nvstart starts norvaned itself, and no second one"

echo "== service norvane start|stop through the init script =="
if [ -d /run/systemd/system ]; then
  echo "package-test: skipped: systemd runs, and 'service' would start the live service"
else
  # /etc/default/norvane points the init script's agent at the simulator on
  # a private socket for this test only.
  printf 'DAEMON_ARGS="--foreground --backend sim --socket %s --state %s"\n' "$T/nvsock3" \
    "$T/state.json" | $SUDO tee /etc/default/norvane >/dev/null
  made_default=1
  $SUDO service norvane start >/dev/null
  for _ in $(seq 200); do [ -S "$T/nvsock3" ] && break; sleep 0.05; done
  NVUI_SOCKET="$T/nvsock3" NVUI_LOG="$T/nvui.log" /usr/bin/nvcmd check >/dev/null ||
    fail "no agent after service norvane start"
  pid=$(cat /run/norvaned.pid)
  [ "$(readlink /proc/"$pid"/exe)" = /usr/sbin/norvaned ] || fail "pid file does not name norvaned"
  $SUDO service norvane status >/dev/null || fail "service norvane status: not running"
  $SUDO service norvane start >/dev/null
  [ "$(pgrep -fc "^/usr/sbin/norvaned .*--socket $T/nvsock3 ")" = 1 ] || fail "a second start ran a second agent"
  $SUDO service norvane stop >/dev/null
  for _ in $(seq 100); do [ -e /proc/"$pid" ] || break; sleep 0.05; done
  [ ! -e /proc/"$pid" ] || fail "service norvane stop left the agent running"
  [ ! -e "$T/nvsock3" ] && [ ! -e /run/norvaned.pid ] || fail "stop left the socket or the pid file"
  $SUDO rm -f /etc/default/norvane
  made_default=0
  ok "service norvane start, status and stop"
fi

echo "== upgrade, removal and purge =="
# What the agent and the console write at run time, and logrotate's copies.
$SUDO mkdir -p /etc/norvane/monit
echo '{}' | $SUDO tee /etc/norvane/settings.json >/dev/null
for f in /var/log/nvui.log /var/log/nvui.log.1 /var/log/nvui.log.2.gz; do
  echo record | $SUDO tee "$f" >/dev/null
done
$SUDO dpkg -i "$deb" >/dev/null
[ -f /etc/norvane/settings.json ] && [ -f /var/log/nvui.log ] || fail "reinstalling lost the data"
[ "$($SUDO stat -c %a /etc/norvane)" = 700 ] || fail "reinstalling changed the mode of /etc/norvane"
$SUDO dpkg -r nvui >/dev/null
[ ! -e /usr/sbin/norvaned ] || fail "removal left norvaned"
[ -f /etc/norvane/settings.json ] && [ -f /var/log/nvui.log.1 ] || fail "removal lost the data"
ok "upgrade and removal keep /etc/norvane and the log"
dpkg-deb -c "$deb" | awk '{print $6}' | sed 's|^\.||' >"$T/files"
$SUDO dpkg --purge nvui >/dev/null
if dpkg-query -W -f='${Status}' nvui 2>/dev/null | grep -qE 'ok (installed|config-files|half)'; then
  fail "dpkg still knows nvui"
fi
while read -r f; do
  [ -n "$f" ] && [ "${f%/}" = "$f" ] || continue
  [ ! -e "$f" ] || fail "$f left after purge"
done <"$T/files"
for f in /etc/norvane /var/log/nvui.log /var/log/nvui.log.1 /var/log/nvui.log.2.gz /usr/share/nvui \
  /usr/share/doc/nvui /run/norvaned.pid /etc/default/norvane; do
  [ ! -e "$f" ] || fail "$f left after purge"
done
left=$(ls /etc/rc?.d/*norvane /etc/systemd/system/*/norvane.* /var/lib/systemd/deb-systemd-helper-enabled/*norvane* \
  2>/dev/null || true)
[ -z "$left" ] || fail "links left after purge: $left"
ok "purge leaves nothing behind"
echo "package-test: all passed"
