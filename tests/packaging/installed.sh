#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Installs the packages on a minimal system, uses them as a newcomer would, upgrades and removes them. Runs as root in
# a root of its own, from the root of the clone; the user `tester` runs the programs.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
packages=$PWD/build/release/packages
source=$PWD/tests
fail() { echo "installed: $*" >&2; exit 1; }
apt() { apt-get -qq -o Dpkg::Use-Pty=0 "$@" >/tmp/apt.log 2>&1 </dev/null || { cat /tmp/apt.log >&2; fail "apt-get $*"; }; }
as_tester() { runuser -u tester -- env -i HOME=/home/tester PATH=/usr/bin:/bin "$@"; }
files() { find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /tmp -o -path /home -o -path /var/cache \
    -o -path /var/lib/apt -o -path /var/lib/dpkg -o -path /var/log -o -path /etc/ld.so.cache \) -prune -o -print | sort; }

apt update
# The version before: nearly the same files under another number.
version=$(dpkg-deb -f "$packages"/libqvs1_*.deb Version)
mkdir /tmp/before
for package in "$packages"/*.deb; do
    rm -rf /tmp/unpacked
    dpkg-deb -R "$package" /tmp/unpacked
    sed -i "s/${version//./\\.}/1.0.0-0qvs1/g" /tmp/unpacked/DEBIAN/control
    library=/tmp/unpacked/usr/lib/libqvs.so
    if [ -e "$library.${version%-*}" ]; then
        mv "$library.${version%-*}" "$library.1.0.0"
        ln -sf libqvs.so.1.0.0 "$library.1"
    fi
    dpkg-deb -b /tmp/unpacked /tmp/before >/dev/null
done
mapfile -t names < <(for package in "$packages"/*.deb; do dpkg-deb -f "$package" Package; done)

# What the packages depend on stays, so that the lists of files can be compared.
apt install --no-install-recommends "$packages"/*.deb
dpkg-query -W -f '${Package}\n' | xargs apt-mark manual >/dev/null
files >/tmp/with
size=$(dpkg-query -W -f '${Installed-Size}\n' "${names[@]}" | awk '{ total += $1 } END { print total }')
[ "$((size * 1024))" -lt 12000000 ] || fail "the packages take $size kB"
# What the tool stores on a machine goes with a purge.
mkdir -p /var/lib/qvs/checkpoints
apt purge "${names[@]}"
files >/tmp/without
for name in "${names[@]}"; do ! dpkg-query -W "$name" 2>/dev/null || fail "$name is still known"; done
[ -z "$(grep -E 'qvs|libmesh|treesh' /tmp/without | grep -v "^$PWD")" ] || fail "files of the packages remain"

apt install --no-install-recommends /tmp/before/*.deb
[ -e /usr/lib/libqvs.so.1.0.0 ] || fail "the version before is not installed"
apt install --no-install-recommends "$packages"/*.deb
files >/tmp/upgraded
cmp /tmp/with /tmp/upgraded || fail "an upgrade leaves other files than an installation"
ldconfig -p | grep -q 'libqvs\.so\.1 ' || fail "the dynamic linker does not know libqvs"
for page in man1/qvs-port.1 man1/treesh.1 man3/VSDVS_CreateVSwitch.3 man3/libqvs-config.3 man5/qvs-lab.5 man7/libqvs.7; do
    gzip -t "/usr/share/man/$page.gz" || fail "no manual page $page"
done
zcat /usr/share/man/man?/* | grep -oE '/usr/share/doc/qvs/[^\\]*' | sort -u >/tmp/named
[ -s /tmp/named ] || fail "no manual page names a document"
while read -r file; do [ -f "$file" ] || fail "a manual page names $file"; done </tmp/named

# What a newcomer does, and programs in four languages.
apt install --no-install-recommends gcc g++ libc6-dev pkg-config golang-go man-db bash-completion zsh
cd /home/tester
as_tester SOURCE="$source" LC_ALL=C.UTF-8 bash "$source/cli/transcript" "$source/packaging/newcomer.t" ||
    fail "a newcomer sees something else"
# The state library of a hypervisor takes the place of the reference. The tool stays, and the emulated host goes.
mkdir -p /tmp/own/DEBIAN /tmp/own/usr/lib
cp -L /usr/lib/libmeshPublic.so /tmp/own/usr/lib
printf '%s: %s\n' Package libmesh-public-own Version 1 Architecture "$(dpkg --print-architecture)" Maintainer nobody \
    Description 'state library' Provides libmesh-public Conflicts libmesh-public Replaces libmesh-public \
    >/tmp/own/DEBIAN/control
dpkg-deb -b /tmp/own /tmp/own.deb >/dev/null
apt install /tmp/own.deb
[ ! -e /usr/bin/qvs-host ] || fail "the emulated host stays without its state library"
status=0
as_tester qvs switch list 2>/tmp/out || status=$?
[ $status -eq 5 ] || fail "with another state library, the tool ends with status $status: $(cat /tmp/out)"
echo "installed: ${#names[@]} packages, $size kB, downloads: $(du -ck "$packages"/*.deb | tail -n 1 | cut -f 1) kB"
