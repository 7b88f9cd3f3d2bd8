#!/usr/bin/env bash
# Proves the diver's package in a fresh Debian: a minimal root made by debootstrap from the
# mirror apt uses on this machine, the package installed there with apt-get and without
# recommendations (so its declared dependencies are all it gets), the programs run inside
# as a diver (an ordinary user) would run them, and the package purged again: nothing of it
# may be left but the diver's own files. Needs root (debootstrap, chroot, mount).
# KEEP_ROOT=1 leaves the root in build-package/fresh-root for a look.
set -euo pipefail
cd "$(dirname "$0")/.."
[ "$(id -u)" -eq 0 ] || { echo "package-test.sh makes a Debian root: run it as root." >&2; exit 1; }
./scripts/package.sh
deb=$(ls build-package/mrvtq5dk_*_amd64.deb)
version=$(dpkg-deb --field "$deb" Version)
codename=$(. /etc/os-release && echo "$VERSION_CODENAME")

root=$PWD/build-package/fresh-root
remove_root() {
  umount "$root/proc" 2> /dev/null || true
  mountpoint -q "$root/proc" 2> /dev/null || rm -rf "$root"
}
remove_root
if [ -n "${KEEP_ROOT:-}" ]; then trap 'umount "$root/proc" 2> /dev/null || true' EXIT; else trap remove_root EXIT; fi

step() { printf '== %s (%d s)\n' "$1" "$SECONDS"; }
fail() {
  echo "package test failed: $*" >&2
  exit 1
}
inside() {
  chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive "$@"
}
# Quiet, and without a terminal of its own (the root has no /dev/pts).
apt_inside() { inside apt-get -qq -o Dpkg::Use-Pty=0 "$@" > /dev/null; }
# The diver: uid 1000, home /home/diver, no rights beyond an ordinary user's.
as_diver() {
  chroot --userspec=1000:1000 "$root" env -i PATH=/usr/bin:/bin LANG=C.UTF-8 \
    HOME=/home/diver XDG_RUNTIME_DIR=/tmp/diver-runtime "$@"
}
# Every path in the root but the kernel's and the package manager's own bookkeeping.
paths() {
  (cd "$root" && find . -xdev \( -path ./proc -o -path ./var/cache -o -path ./var/lib/apt \
    -o -path ./var/lib/dpkg -o -path ./var/log -o -path ./tmp \) -prune -o -print | sort)
}

# The same archive and suites as apt on this machine (the release, its updates, security).
debian_sources() {
  apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' \
    'Origin: Debian' 'Identifier: Packages' | sort -u
}
sources=$(debian_sources)
[ -n "$sources" ] || { apt-get update -qq && sources=$(debian_sources); }
mirror=$(awk -v release="$codename" '$2 == release { print $1; exit }' <<< "$sources")
[ -n "$mirror" ] || fail "apt has no Debian $codename archive here (run apt-get update)"

step "a minimal Debian $codename root from $mirror"
debootstrap --variant=minbase "$codename" "$root" "$mirror" > "$root.log" 2>&1 ||
  fail "debootstrap: $(tail -n 3 "$root.log")"
rm -f "$root.log"
awk '{ print "deb", $1, $2, $3 }' <<< "$sources" > "$root/etc/apt/sources.list"
cp /etc/resolv.conf "$root/etc/resolv.conf"
# No service starts in the root, as is usual in a chroot.
printf '#!/bin/sh\nexit 101\n' > "$root/usr/sbin/policy-rc.d"
chmod +x "$root/usr/sbin/policy-rc.d"
mount -t proc proc "$root/proc"
inside useradd --create-home --uid 1000 --shell /bin/bash diver
inside mkdir -m 700 /tmp/diver-runtime
inside chown diver: /tmp/diver-runtime
apt_inside update
# The manual reader is the test's: it must be there before the snapshot below.
apt_inside install -y --no-install-recommends man-db
before=$(paths)

step "apt-get install ./$(basename "$deb")"
cp "$deb" "$root/tmp/"
apt_inside install -y --no-install-recommends "/tmp/$(basename "$deb")"
installed=$(inside dpkg-query --listfiles mrvtq5dk)
grep -qx /usr/lib/udev/rules.d/70-mrvtq5dk.rules <<< "$installed" || fail "no udev rule installed"

step "the command line as the diver"
[ "$(as_diver mrvtq5dk-cli --version)" = "mrvtq5dk-cli $version" ] || fail "mrvtq5dk-cli --version"
as_diver mrvtq5dk-cli --help | grep -q 'export FILE.uddf' || fail "mrvtq5dk-cli --help"
as_diver mrvtq5dk-cli export /home/diver/dives.uddf || fail "export from an empty library"
xmllint --noout --schema tests/data/uddf/uddf_3.2.3.xsd "$root/home/diver/dives.uddf"
[ -f "$root/home/diver/.local/share/Mrvtq5dk/Mrvtq5dk.sqlite" ] || fail "no library was made"

step "the window, offscreen"
[ "$(as_diver Mrvtq5dk --version)" = "Mrvtq5dk $version" ] || fail "Mrvtq5dk --version"
# Started, it keeps running until it is closed: still up after five seconds, its start-up
# finished (the layout loaded, the folders made).
window_status=0
as_diver env QT_QPA_PLATFORM=offscreen timeout 5 Mrvtq5dk > "$root/tmp/window.log" 2>&1 ||
  window_status=$?
[ "$window_status" -eq 124 ] || fail "the window ended with $window_status: $(cat "$root/tmp/window.log")"
grep -q 'viewDidLoad end' "$root/tmp/window.log" || fail "the window did not finish starting"
[ -d "$root/home/diver/Downloads/Mrvtq5dk/voice" ] || fail "the window made no voice folder"

step "man mrvtq5dk-cli"
manual=$(as_diver env MANWIDTH=80 man mrvtq5dk-cli 2> /dev/null)
grep -q 'EXIT STATUS' <<< "$manual" || fail "man mrvtq5dk-cli shows no exit statuses"

step "apt-get purge --autoremove mrvtq5dk"
apt_inside purge -y --autoremove mrvtq5dk
left=$(comm -13 <(echo "$before") <(paths) | grep -v -E '^\./home/diver(/|$)' || true)
[ -z "$left" ] || fail "left behind by the package: $left"
[ -f "$root/home/diver/dives.uddf" ] || fail "the diver's files went with the package"
step "passed: $(wc -l <<< "$installed") paths installed and removed"
