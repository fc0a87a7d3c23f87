#!/bin/busybox sh
# The init of the test machine (run.sh boots it twice): it brings up what a dash's own
# boot would, runs the device build's tests on it and powers off. Everything it says
# goes to the serial console, which the host reads.
/bin/busybox --install -s
export PATH=/bin:/sbin:/usr/bin:/usr/sbin

mount -t proc proc /proc
mount -t devtmpfs dev /dev
mount -t tmpfs -o mode=1777 tmp /tmp
mount -t tmpfs run /run

# /sys is the kernel's, with what a dash has there and this machine lacks beside it: the
# factory record, the key lines (Debian's kernel has no mock GPIO chip) and the LEDs.
mkdir -p /run/sysfs
mount -t sysfs sysfs /run/sysfs
mount -t tmpfs -o mode=755 board /sys
for d in /run/sysfs/*; do
    mkdir "/sys/${d##*/}"
    mount -o bind "$d" "/sys/${d##*/}"
done
mkdir -p /sys/uid/otp
mount -t tmpfs gpio /sys/class/gpio
mount -t tmpfs leds /sys/class/leds

# The DRM display keeps three pages of its mode; the memory framebuffer stands in only
# where no display came up (three 800 x 480 pages of 16 bits).
while read -r m; do
    args=""
    case $m in
        drm_kms_helper) args="drm_fbdev_overalloc=300" ;;
        vfb) [ -e /dev/fb0 ] && continue; args="vfb_enable=1 videomemorysize=2304000" ;;
    esac
    # shellcheck disable=SC2086
    insmod "/lib/modules/$m.ko" $args || echo "motordash-vm: module $m did not load"
done < /lib/modules/load.list

mount -t ext4 /dev/vda /app/data || echo "motordash-vm: no persistent disk"
mkdir -p /app/data/config /app/data/log
ln -s ttyS1 /dev/ttySP2

boot=$(sed -n 's/.*motordash\.boot=\([0-9]*\).*/\1/p' /proc/cmdline)
case $boot in
    1) filter="-AfterPowerCycle.*" ;;
    *) filter="AfterPowerCycle.*" ;;
esac
# run.sh's TEST_FILTER, to run some of them while working on one.
only=$(sed -n 's/.*motordash\.filter=\([^ ]*\).*/\1/p' /proc/cmdline)
[ -n "$only" ] && filter="$only"
echo "motordash-vm: boot $boot on $(uname -r), $(cat /sys/class/graphics/fb0/name 2>/dev/null)"
cd /tmp && /app/bin/motordash-target-tests --gtest_filter="$filter" --gtest_color=no
echo "motordash-vm: boot $boot done ($?)"

sync
umount /app/data
poweroff -f
