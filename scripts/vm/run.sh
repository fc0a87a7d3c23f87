#!/bin/sh
# `make test-vm`: the device build on Debian's kernel in a virtual machine. Builds the
# programs, fetches the kernel (kernel.sh), packs the initramfs (image.sh) and boots it
# twice on one persistent disk, a power cycle in between: first with a 320 x 240 panel
# on an emulated DRM display, then with an 800 x 480 one on a memory framebuffer. The
# machine's tests report on its serial console; this prints their results and a line
# "N passed, N failed", and fails on a failed test, a boot that did not finish, or time.
#
# TEST_FILTER=PATTERN runs only the tests it names (a GoogleTest filter) at both boots;
# the console of each boot is kept in build/vm/bootN.log, the dash's output in its lines
# "motordash| ...".
set -eu

TOP=$(cd "$(dirname "$0")/../.." && pwd)
cd "$TOP"
DEVICE=build/device
VM=$TOP/build/vm
JOBS=${JOBS:-2}
BOOT_SECONDS=${BOOT_SECONDS:-180}
started=$(date +%s)

scripts/install-target-deps.sh

# A tree made here is built without full debug information, which halves the time of a
# first build; one made by `make device` is taken as it is.
if [ ! -f "$DEVICE/CMakeCache.txt" ]; then
    cmake --preset device -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 -g1 -DNDEBUG" >/dev/null
fi
cmake --build "$DEVICE" -j"$JOBS" --target motordash motordash-xcp motordash-ioboard motordash-target-tests |
    grep -v '^\[' || true
[ -x "$DEVICE/bin/motordash-target-tests" ] || { echo "test-vm: the device build failed" >&2; exit 1; }
built=$(date +%s)

mkdir -p "$VM"
kernel=$(scripts/vm/kernel.sh "$VM")
scripts/vm/image.sh "$kernel" "$DEVICE/bin" "$VM/initramfs.cpio"
# The dash's persistent folder, /app/data, on a disk of its own that outlives a boot.
rm -f "$VM/data.img"
truncate -s 32M "$VM/data.img"
mkfs.ext4 -q -F "$VM/data.img"
rm -rf "$VM/pictures"
sockets=$(mktemp -d)
trap 'rm -rf "$sockets"' EXIT

# Emulated, one processor keeps better time than two: the guest's 10 ms timer loses
# fewer ticks when no second emulated processor competes for the host's.
if [ -r /dev/kvm ] && [ -w /dev/kvm ]; then
    accel="-accel kvm -cpu host -smp ${SMP:-2}"
    how="KVM"
else
    accel="-accel tcg -smp ${SMP:-1}"
    how="plain emulation (no usable /dev/kvm): slower"
fi
echo "test-vm: Debian kernel $(cat "$kernel/release"), $how"

# One boot: the four CAN controllers on two buses (the dash's can0 and can1, their far
# ends can2 and can3), the watchdog, the disk, the serial console, and two serial ports
# wired together: ttyS1 for the dash, ttyS2 for the I/O board. A watchdog that fires
# sends the machine an NMI, which its kernel logs and the tests look for.
boot() {
    n=$1 panel=$2 display=$3
    filter=${TEST_FILTER:+motordash.filter=$TEST_FILTER}
    # shellcheck disable=SC2086
    timeout "$BOOT_SECONDS" qemu-system-x86_64 -M pc -m 512 $accel -nodefaults -no-user-config \
        -display none -no-reboot -kernel "$kernel/vmlinux" -initrd "$VM/initramfs.cpio" \
        -append "console=ttyS0 quiet panic=-1 motordash.boot=$n motordash.panel=$panel $display $filter" \
        -serial stdio \
        -chardev socket,id=line,path="$sockets/line$n",server=on,wait=off \
        -device isa-serial,chardev=line,iobase=0x2f8,irq=3 \
        -chardev socket,id=board,path="$sockets/line$n" \
        -device isa-serial,chardev=board,iobase=0x3e8,irq=5 \
        -object can-bus,id=bus0 -object can-bus,id=bus1 \
        -device kvaser_pci,canbus=bus0,addr=10 -device kvaser_pci,canbus=bus1,addr=11 \
        -device kvaser_pci,canbus=bus0,addr=12 -device kvaser_pci,canbus=bus1,addr=13 \
        -device i6300esb -action watchdog=inject-nmi \
        -drive file="$VM/data.img",format=raw,if=virtio \
        ${display:+-device cirrus-vga} </dev/null 2>&1 |
        tr -d '\r' | tee "$VM/boot$n.log" | grep --line-buffered -v -e '^\[ *[0-9]*\.[0-9]*\]' -e '^motordash| ' || true
}
boot 1 320x240 "video=VGA-1:320x240M-16@60"
boot 2 800x480 ""

# Pictures of a difference, which the machine wrote on its disk.
if debugfs -R "ls /pictures" "$VM/data.img" 2>/dev/null | grep -q png; then
    debugfs -R "rdump /pictures $VM" "$VM/data.img" >/dev/null 2>&1 || true
    echo "test-vm: pictures of the differences in $VM/pictures"
fi

count() {
    cat "$VM/boot1.log" "$VM/boot2.log" | grep -cE "^\[ +$1 +\] .* \([0-9]+ ms\)\$" || true
}
passed=$(count OK)
failed=$(count FAILED)
# A boot counts as one more failure when its tests did not all run to a good end (a set-up
# that failed, a crash, a hang).
for n in 1 2; do
    if ! grep -q "^motordash-vm: boot $n done (0)" "$VM/boot$n.log"; then
        echo "test-vm: boot $n did not finish well (see $VM/boot$n.log)"
        failed=$((failed + 1))
    fi
done
echo "test-vm: $((built - started)) s to build, $(($(date +%s) - built)) s for the kernel, the image and two boots"
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
