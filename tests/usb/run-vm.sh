#!/bin/sh
# SPDX-License-Identifier: MIT
# run-vm.sh KERNEL INITRAMFS LOG
#
# Boots the guest; its output comes out here, the kernel's messages go to LOG. The exit status is the guest's verdict; 124:
# timed out, 125: it ended without one.
kernel=$1 initramfs=$2 log=$3

# Emulation alone: what has to hold here has to hold on machines without KVM, and nested KVM is not to be trusted.
# On a busy machine the guest stands still now and then, which its kernel would take for broken hardware.
patience="no_timer_check tsc=reliable nowatchdog rcupdate.rcu_cpu_stall_suppress=1"

timeout "${VM_TIMEOUT:-1500}" qemu-system-x86_64 -M pc -accel tcg,thread=multi -cpu max -smp 2 -m 640 \
    -nodefaults -no-user-config -display none -no-reboot \
    -chardev stdio,id=out -device virtio-serial-pci -device virtconsole,chardev=out -serial "file:$log" \
    -device isa-debug-exit,iobase=0x501,iosize=2 -kernel "$kernel" -initrd "$initramfs" \
    -append "console=ttyS0 loglevel=4 panic=-1 mitigations=off nokaslr random.trust_cpu=on $patience" </dev/null
status=$?
if [ $status -eq 124 ]; then
    echo "usb lane: the guest did not end in time" >&2
    exit 124
fi
# The guest's verdict v arrives as 2v + 1. An even status is a panic or a reset and must never count as a pass.
if [ $((status & 1)) -eq 0 ]; then
    echo "usb lane: the guest ended without a verdict (status $status); its last words are in $log" >&2
    exit 125
fi
exit $((status >> 1))
