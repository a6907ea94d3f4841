#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# build-initramfs.sh OUT BUILD PROGRAM...
#
# Packs the guest of the USB lane: modules of the downloaded kernel, udevd, busybox, the scripts of guest/, and the programs
# with all libraries that they link to. Programs and libraries lie in the guest where they lie on this machine, so that
# the tests find each other; only BUILD/simulator/nimbrelle-sim is replaced by guest/nimbrelle-sim, which puts the
# simulated instrument on a USB cable.
#
# Environment: KERNEL_DIR (unpacked kernel package, depmod has run), BUSYBOX (a static one), ONLY (words that the names of
# the wanted checks contain; all without it)
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
out=$1 build=$2
shift 2
: "${KERNEL_DIR:?}" "${BUSYBOX:?}"

modules=(virtio_pci virtio_console dummy_hcd libcomposite usb_f_acm usb_f_hid cdc-acm usbhid hid-generic usbmon)
# Rules of the distribution that matter to ttys and hidraw nodes; ours are put in place by a check.
rules=(50-udev-default 60-serial 80-drivers)

root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
chmod 755 "$root"
mkdir -p "$root"/{bin,sbin,modules,tests,etc/udev,lib/systemd,lib/udev/rules.d,usr/bin,home/user,home/stranger}
chown 1000 "$root/home/user" 2>/dev/null || true
chown 1001 "$root/home/stranger" 2>/dev/null || true

install_modules() {
    local version file name
    version=$(basename "$KERNEL_DIR"/lib/modules/*)
    for module in "${modules[@]}"; do
        modprobe -d "$KERNEL_DIR" -S "$version" --show-depends "$module"
    done | awk '$1 == "insmod" && !seen[$2]++ { print $2 }' | while read -r file; do
        name=$(basename "${file%.ko*}")
        objcopy --strip-debug "$file" "$root/modules/$name.ko"
        echo "$name" >>"$root/modules/order"
    done
}

install_scripts() {
    cp "$BUSYBOX" "$root/bin/busybox"
    cp "$here/guest/init" "$root/init"
    cp "$here/guest/gadget" "$root/bin/"
    cp "$here/guest/lane" "$root/bin/"
    cp "$here/../../packaging/71-nimbrelle.rules" "$root/etc/"
    chmod +x "$root/init" "$root"/bin/*
    printf "BUILD='%s'\nONLY='%s'\n" "$build" "${ONLY:-}" >"$root/etc/lane.conf"
}

install_users() {
    cat >"$root/etc/passwd" <<TEXT
root:x:0:0:root:/root:/bin/sh
user:x:1000:1000:sits at the machine:/home/user:/bin/sh
stranger:x:1001:1001:is in no group:/home/stranger:/bin/sh
TEXT
    { getent group root tty dialout kmem input video render lp disk cdrom tape kvm audio sgx || true; } |
        sed 's/^\(dialout:.*\):.*/\1:user/' >"$root/etc/group"
    printf 'user:x:1000:\nstranger:x:1001:\n' >>"$root/etc/group"
}

install_udev() {
    cp "$(command -v udevadm)" "$root/bin/udevadm"
    ln -s /bin/udevadm "$root/lib/systemd/systemd-udevd" # the name makes it the daemon
    for rule in "${rules[@]}"; do
        cp "/lib/udev/rules.d/$rule.rules" "$root/lib/udev/rules.d/"
    done
}

install_programs() {
    for program in "$@"; do
        mkdir -p "$root$(dirname "$program")"
        cp "$program" "$root$program"
    done
    ldd "$@" "$(command -v udevadm)" | grep -o '/[^ ]* (' | tr -d ' (' | sort -u | while read -r library; do
        mkdir -p "$root$(dirname "$library")"
        cp -Ln "$library" "$root$library"
    done
    find "$root" -type f \( -name '*.so*' -o -path "$root$build/*" \) -exec strip --strip-unneeded {} +
    mv "$root$build/simulator/nimbrelle-sim" "$root/bin/simulated-instrument"
    cp "$here/guest/nimbrelle-sim" "$root$build/simulator/nimbrelle-sim"
    chmod +x "$root$build/simulator/nimbrelle-sim"
}

install_modules
install_scripts
install_users
install_udev
install_programs "$@"
(cd "$root" && find . -print0 | cpio --null -o -H newc --quiet) | gzip -1 >"$out"
