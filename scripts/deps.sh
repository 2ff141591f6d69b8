#!/usr/bin/env bash
# Installs the Debian packages the build, the tests, the benchmarks and the
# package test need, when missing, and generates the two locales the console uses.
set -euo pipefail

packages=(
  g++ cmake make pkg-config
  libncurses-dev libgtest-dev libgmock-dev libbenchmark-dev
  nlohmann-json3-dev libvterm-dev python3-jsonschema ansible-core locales clang libclang-rt-dev clang-format dialog
  libnl-3-dev libnl-route-3-dev iptables iproute2 procps dnsmasq-base passwd nftables ufw
  ifupdown isc-dhcp-client vsftpd samba network-manager netplan.io openssh-client
  libsystemd-dev
  tmux
  debhelper dpkg-dev lintian man-db systemd dbus-daemon jq logrotate git ccache
)

missing=()
for p in "${packages[@]}"; do
  [ -n "$p" ] || continue
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"

# Packages such as vsftpd, samba and dnsmasq would start their services on
# this machine when installed; the tests run them only inside namespaces. A
# policy-rc.d that refuses every start is in place for the installation
# (an administrator's own policy-rc.d is left as it is).
POLICY=/usr/sbin/policy-rc.d
made_policy=0
refuse_starts() {
  if [ ! -e "$POLICY" ]; then
    printf '#!/bin/sh\n# deps.sh: no service starts while packages install\nexit 101\n' | $SUDO tee "$POLICY" >/dev/null
    $SUDO chmod 755 "$POLICY"
    made_policy=1
  fi
}
allow_starts() { if [ $made_policy -eq 1 ]; then $SUDO rm -f "$POLICY"; made_policy=0; fi; }
trap allow_starts EXIT

if [ ${#missing[@]} -gt 0 ]; then
  echo "deps: installing ${missing[*]}"
  $SUDO apt-get update -qq
  refuse_starts
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}" >/dev/null
  allow_starts
fi

have_locale() { locale -a 2>/dev/null | tr 'A-Z' 'a-z' | tr -d '-' | grep -qx "$1"; }
need_gen=0
if ! have_locale en_us.utf8; then
  echo 'en_US.UTF-8 UTF-8' | $SUDO tee -a /etc/locale.gen >/dev/null; need_gen=1
fi
if ! have_locale zh_cn.gb2312; then
  echo 'zh_CN.GB2312 GB2312' | $SUDO tee -a /etc/locale.gen >/dev/null; need_gen=1
fi
if [ $need_gen -eq 1 ]; then
  $SUDO locale-gen >/dev/null
fi

# The sandbox's SSH server (nv-sandbox.sh --sshd): the distribution's
# package downloaded and unpacked into a cache, never installed here.
if [ -n "${NV_SANDBOX_CACHE:-}" ] || [ -w /var/cache ]; then
  bash "$(dirname "$(readlink -f "$0")")/../tests/support/nv-sshd-fetch.sh" >/dev/null || \
    echo "deps: the sandbox's sshd could not be fetched (sandbox SSH tests will skip)" >&2
fi
