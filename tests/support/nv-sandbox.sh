#!/usr/bin/env bash
# A throwaway sandbox for the live agent: new network, UTS, IPC, mount and
# PID namespaces (never a user namespace), a private copy of /etc over /etc,
# files over the two global sysctls (kernel.threads-max, fs.file-max), a
# fresh sysfs, loopback up, a veth pair nv0/nvpeer0 whose peer sits in a
# second network namespace "peer" (reach it with nv-sandbox-peer CMD...),
# and the namespace's own empty firewall. The command runs inside with
# NV_SANDBOX=1; when it ends every process, mount and namespace of the
# sandbox goes with it and the private copies are removed.
#
# Usage: nv-sandbox.sh [--dhcp] [--networkd] [--nm] -- COMMAND [ARG]...
#   --dhcp      run dnsmasq in the peer namespace, serving 10.77.0.100-150 on
#               nvpeer0 (10.77.0.1/24); its pid in /run/nv-sandbox/dnsmasq.pid
#   --networkd  run a private system bus (dbus-daemon, socket in the
#               sandbox's /run, no service activation) and systemd-networkd
#               as the sandbox's network manager; /sys is read-only, as in a
#               container, so that networkd does not wait for udev. Their
#               pids are in /run/nv-sandbox/{dbus,networkd}.pid and the bus's
#               configuration file is named by NV_SANDBOX_DBUS_CONF.
#   --nm        the same private system bus and NetworkManager (the
#               distribution's configuration plus a conf.d file of the
#               sandbox: no polkit, so root only; resolv.conf left alone; no
#               automatic connections); /var/lib/NetworkManager is private.
#               /sys is read-only as with --networkd. Its pid is in
#               /run/nv-sandbox/nm.pid, and NV_SANDBOX_NM=1.
# Needs root. Exit status: the command's; 77 when namespaces are not
# available (the test harness reports a skip).
set -euo pipefail

# Waits up to 10 s for a path to exist.
wait_for() {
  local i
  for i in $(seq 100); do
    [ -e "$1" ] && return 0
    sleep 0.1
  done
  echo "nv-sandbox: $1 did not appear" >&2
  return 1
}

# The private system bus (inside the sandbox's namespaces).
start_bus() {
  local work="$1"
  mkdir -p /run/dbus /run/nv-sandbox
  export NV_SANDBOX_DBUS_CONF="$work/dbus.conf"
  dbus-daemon --config-file="$NV_SANDBOX_DBUS_CONF" --nofork --nopidfile \
    2>/run/nv-sandbox/dbus.log &
  echo $! > /run/nv-sandbox/dbus.pid
  wait_for /run/dbus/system_bus_socket
}

# NetworkManager on the private bus, its state on the sandbox's tmpfs; a
# read-only /sys tells it, as in a container, not to wait for udev.
start_nm() {
  mount -o remount,ro /sys
  mkdir -p /etc/NetworkManager/conf.d /run/NetworkManager
  cat > /etc/NetworkManager/conf.d/90-nv-sandbox.conf <<'CONF'
[main]
auth-polkit=false
dns=none
rc-manager=unmanaged
no-auto-default=*
CONF
  NetworkManager --no-daemon --debug --log-level=INFO 2>/run/nv-sandbox/nm.log &
  echo $! > /run/nv-sandbox/nm.pid
  export NV_SANDBOX_NM=1
  local i
  for i in $(seq 100); do
    nmcli -t -f RUNNING general status 2>/dev/null | grep -q running && return 0
    sleep 0.1
  done
  echo "nv-sandbox: NetworkManager did not start" >&2
  return 1
}

# The private system bus and networkd (inside the sandbox's namespaces).
start_networkd() {
  local work="$1"
  mount -o remount,ro /sys
  start_bus "$work"
  install -d -o systemd-network -g systemd-network /run/systemd /run/systemd/netif \
    /run/systemd/netif/links /run/systemd/netif/leases /run/systemd/netif/lldp
  /usr/lib/systemd/systemd-networkd 2>/run/nv-sandbox/networkd.log &
  echo $! > /run/nv-sandbox/networkd.pid
  wait_for /run/systemd/netif/state
}

# Stops what start_networkd started (the end of the sandbox's PID namespace
# would end them anyway).
stop_daemons() {
  local f pid
  for f in /run/nv-sandbox/nm.pid /run/nv-sandbox/networkd.pid /run/nv-sandbox/dbus.pid; do
    [ -f "$f" ] || continue
    pid="$(cat "$f")"
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
}

if [ "${1:-}" = "--inside" ]; then
  shift
  work="$1"; shift
  dhcp="$1"; shift
  networkd="$1"; shift
  nm="$1"; shift
  mount --make-rprivate /
  # A null device of our own, whatever happens to the machine's meanwhile.
  mount --bind "$work/null" /dev/null
  mount --bind "$work/etc" /etc
  mount --bind "$work/threads-max" /proc/sys/kernel/threads-max
  mount --bind "$work/file-max" /proc/sys/fs/file-max
  mount -t sysfs sysfs /sys
  mount -t tmpfs -o mode=0755 tmpfs /run
  mkdir -p /run/netns /run/lock /run/network
  # What the services write under /var (DHCP leases, Samba's databases,
  # logs) stays inside the sandbox.
  for d in /var/lib/dhcp /var/lib/samba /var/cache/samba /var/log /var/lib/NetworkManager; do
    if [ -d "$d" ]; then mount -t tmpfs -o mode=0755 tmpfs "$d"; fi
  done
  mkdir -p /var/lib/samba/private /var/log/samba
  hostname nv-sandbox
  ip link set lo up
  # The peer namespace holds the far end of the veth pair (and DHCP).
  touch /run/netns/peer
  unshare --net=/run/netns/peer true
  ip link add nv0 type veth peer name nvpeer0
  ip link set nvpeer0 netns peer
  ip -n peer link set lo up
  ip -n peer addr add 10.77.0.1/24 dev nvpeer0
  ip -n peer link set nvpeer0 up
  ip link set nv0 up
  if [ "$dhcp" = 1 ]; then
    ip netns exec peer dnsmasq --keep-in-foreground --no-resolv --no-hosts \
      --conf-file=/dev/null --interface=nvpeer0 --bind-interfaces --except-interface=lo \
      --dhcp-range=10.77.0.100,10.77.0.150,255.255.255.0,2m --dhcp-leasefile=/run/nv-leases \
      --pid-file= --log-facility=/run/dnsmasq.log &
    mkdir -p /run/nv-sandbox
    echo $! > /run/nv-sandbox/dnsmasq.pid
  fi
  if [ "$networkd" = 1 ]; then
    start_networkd "$work"
  fi
  if [ "$nm" = 1 ]; then
    start_bus "$work"
    start_nm
  fi
  export NV_SANDBOX=1
  set +e
  "$@"
  status=$?
  set -e
  stop_daemons
  exit $status
fi

dhcp=0
networkd=0
nm=0
while [ $# -gt 0 ]; do
  case "$1" in
    --dhcp) dhcp=1; shift ;;
    --networkd) networkd=1; shift ;;
    --nm) nm=1; shift ;;
    --) shift; break ;;
    *) break ;;
  esac
done
[ $# -gt 0 ] || { echo "usage: nv-sandbox.sh [--dhcp] [--networkd] [--nm] -- COMMAND [ARG]..." >&2; exit 2; }
if [ "$networkd" = 1 ] && [ "$nm" = 1 ]; then
  echo "nv-sandbox: --networkd and --nm exclude each other" >&2
  exit 2
fi
if [ "$(id -u)" -ne 0 ]; then
  echo "nv-sandbox: needs root" >&2
  exit 77
fi
if ! unshare --net --uts --ipc --mount --pid --fork true 2>/dev/null; then
  echo "nv-sandbox: namespaces are not available here" >&2
  exit 77
fi

work="$(mktemp -d /tmp/nv-sandbox.XXXXXX)"
trap 'rm -rf "$work"' EXIT
cp -a /etc "$work/etc"
mknod -m 666 "$work/null" c 1 3
cat /proc/sys/kernel/threads-max > "$work/threads-max"
cat /proc/sys/fs/file-max > "$work/file-max"
if [ "$nm" = 1 ]; then
  for tool in dbus-daemon nmcli NetworkManager; do
    if ! command -v "$tool" >/dev/null; then
      echo "nv-sandbox: $tool is missing" >&2
      exit 77
    fi
  done
fi
if [ "$networkd" = 1 ]; then
  for tool in dbus-daemon networkctl /usr/lib/systemd/systemd-networkd; do
    if ! command -v "$tool" >/dev/null; then
      echo "nv-sandbox: $tool is missing" >&2
      exit 77
    fi
  done
fi
if [ "$networkd" = 1 ] || [ "$nm" = 1 ]; then
  # A system bus for the network daemons and their tools only: their
  # policies from the packages' system.d files, no service directories
  # (nothing is activated).
  cat > "$work/dbus.conf" <<'CONF'
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path=/run/dbus/system_bus_socket</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <deny own="*"/>
    <deny send_type="method_call"/>
    <allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
    <allow send_destination="org.freedesktop.DBus" send_interface="org.freedesktop.DBus"/>
    <allow send_destination="org.freedesktop.DBus"
           send_interface="org.freedesktop.DBus.Introspectable"/>
    <allow send_destination="org.freedesktop.DBus"
           send_interface="org.freedesktop.DBus.Properties"/>
  </policy>
  <includedir>/usr/share/dbus-1/system.d</includedir>
  <includedir>/etc/dbus-1/system.d</includedir>
</busconfig>
CONF
fi
set +e
unshare --net --uts --ipc --mount --pid --fork --mount-proc \
  bash "$(readlink -f "$0")" --inside "$work" "$dhcp" "$networkd" "$nm" "$@"
status=$?
set -e
exit $status
