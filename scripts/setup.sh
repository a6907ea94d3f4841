#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what the build, the tests and the demo need on Debian 12; with --usb also what the USB lane needs, with --tsan
# what builds the Qt of the thread sanitizer, with --check what scripts/check.sh calls. Says nothing when nothing is missing.
set -euo pipefail

packages=(
    g++ cmake ninja-build ccache pkg-config
    qtbase5-dev libqt5serialport5-dev libhidapi-dev      # the library
    libcli11-dev nlohmann-json3-dev                      # the client
    libqwt-qt5-dev libqt5svg5-dev                        # its pictures
    fonts-dejavu-core fonts-wqy-microhei fonts-unifont   # their texts; the last has almost every script
    clang libclang-rt-14-dev                             # the sanitizer build
    libumockdev-dev umockdev libudev-dev                 # fake ports for the tests
    libbenchmark-dev doxygen python3
)
[ "${1:-}" = --usb ] && packages+=(qemu-system-x86 udev kmod cpio binutils)
[ "${1:-}" = --tsan ] && packages+=(dpkg-dev make perl)
[ "${1:-}" = --check ] && packages+=(git clang-format clang-tidy shellcheck pyflakes3)

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -eq 0 ]; then as_root=(env); else as_root=(sudo); fi
echo "setup: installing ${missing[*]}" >&2
log=$(mktemp)
if ! { "${as_root[@]}" apt-get update &&
       DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1
then
    cat "$log" >&2
    echo "setup: the packages above could not be installed; see the messages, then try again" >&2
    exit 1
fi
rm -f "$log"
