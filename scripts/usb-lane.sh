#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs library and client on real ttyACM and hidraw nodes, with simulated instruments at the end of emulated USB cables.
set -euo pipefail

usage() {
    cat <<TEXT
usage: scripts/usb-lane.sh [WORDS]

Boots Debian's kernel in qemu, without KVM and without root, and lets the checks of tests/usb run there; takes
about ten minutes. Programs come from build/release, kernel and guest lie in build/usb-lane, and so do the logs: lane.log,
and kernel.log for the guest's kernel.

  WORDS    runs only the checks whose lines contain these words

Exit code: 0 when every check passed, and also when qemu or the kernel's package cannot be had ("skipped").
TEXT
}

case "${1:-}" in
    -h|--help) usage; exit 0 ;;
    -*) usage >&2; exit 2 ;;
esac
only=${1:-}

cd "$(dirname "$0")/.."
build=$PWD/build/release
lane=$PWD/build/usb-lane
mkdir -p "$lane"

skip() {
    echo "usb lane: skipped, $1"
    exit 0
}

# fetch PACKAGE: its content in $lane/PACKAGE, without installing anything
fetch() {
    [ -d "$lane/$1" ] && return
    rm -rf "$lane/download"
    mkdir -p "$lane/download"
    (cd "$lane/download" && apt-get download "$1") >>"$lane/setup.log" 2>&1 || return
    dpkg -x "$lane/download/"*.deb "$lane/$1.part" && mv "$lane/$1.part" "$lane/$1" && rm -r "$lane/download"
}

scripts/setup.sh
scripts/setup.sh --usb >"$lane/setup.log" 2>&1 || skip "its packages cannot be installed; see $lane/setup.log"
kernel=$(apt-cache depends linux-image-amd64 2>&1 | sed -n 's/.*Depends: \(linux-image-[0-9].*\)/\1/p' | head -n 1)
[ -n "$kernel" ] || skip "there is no kernel package for this machine"
for package in "$kernel" busybox-static; do
    fetch "$package" || skip "the package $package cannot be downloaded; see $lane/setup.log"
done

. scripts/build.sh release --target usb-lane-programs

echo "== packing the guest: $kernel"
depmod -b "$lane/$kernel" "$(basename "$lane/$kernel"/lib/modules/*)"
ONLY=$only KERNEL_DIR=$lane/$kernel BUSYBOX=$lane/busybox-static/bin/busybox tests/usb/build-initramfs.sh \
    "$lane/initramfs.gz" "$build" "$build/client/nimbrelle" "$build/simulator/nimbrelle-sim" \
    "$build"/tests/end_to_end/{TestDcRun,TestLosses,TestUnplug} "$build/tests/usb/TestReplug"

echo "== checks"
tests/usb/run-vm.sh "$lane/$kernel"/boot/vmlinuz-* "$lane/initramfs.gz" "$lane/kernel.log" | tee "$lane/lane.log"
