#!/usr/bin/env bash
# Fetches the OpenSSH server of the distribution for the sandbox's sshd
# (nv-sandbox.sh --sshd): `apt-get download` of its packages and `dpkg -x`
# into a cache directory, once. Nothing is installed on this machine and no
# service is started; the server runs only inside the sandbox.
#
# Usage: nv-sshd-fetch.sh [CACHE_DIR]
#   CACHE_DIR   default $NV_SANDBOX_CACHE or /var/cache/nv-sandbox
# Prints the directory the packages were unpacked into (its usr/sbin/sshd).
# Exit status 77 when the packages cannot be had (no network, no apt).
set -euo pipefail

cache="${1:-${NV_SANDBOX_CACHE:-/var/cache/nv-sandbox}}"
root="$cache/openssh/root"
if [ -x "$root/usr/sbin/sshd" ]; then
  echo "$root"
  exit 0
fi
command -v apt-get >/dev/null && command -v dpkg >/dev/null || {
  echo "nv-sshd-fetch: apt-get and dpkg are needed" >&2
  exit 77
}
mkdir -p "$cache/openssh"
# Unpacked beside the final directory and moved in one step, so that an
# interrupted fetch never leaves half a server behind.
stage="$(mktemp -d "$cache/openssh/stage.XXXXXX")"
trap 'rm -rf "$stage"' EXIT
mkdir -p "$stage/debs" "$stage/root"
# apt's download user may not write to the cache: the packages are fetched
# in a directory of its own and checked by apt as usual.
chmod 755 "$stage" "$stage/debs"
if ! (cd "$stage/debs" && apt-get download -q openssh-server openssh-sftp-server >"$stage/apt.log" 2>&1); then
  echo "nv-sshd-fetch: apt-get download failed:" >&2
  cat "$stage/apt.log" >&2
  exit 77
fi
for deb in "$stage"/debs/*.deb; do
  dpkg -x "$deb" "$stage/root"
done
[ -x "$stage/root/usr/sbin/sshd" ] || { echo "nv-sshd-fetch: no sshd in the packages" >&2; exit 77; }
rm -rf "$root"
mv "$stage/root" "$root"
echo "$root"
