#!/bin/sh
# The initramfs of the test machine: a static busybox, the device build's programs with
# the shared libraries they load, the kernel's modules, the reference pictures the tests
# compare with, the device's folders, and init.sh as its init.
#   image.sh KERNEL_DIR BIN_DIR OUT
set -eu

KERNEL=${1:?usage: image.sh KERNEL_DIR BIN_DIR OUT}
BIN=${2:?usage: image.sh KERNEL_DIR BIN_DIR OUT}
OUT=${3:?usage: image.sh KERNEL_DIR BIN_DIR OUT}
TOP=$(cd "$(dirname "$0")/../.." && pwd)
PROGRAMS="motordash motordash-xcp motordash-ioboard motordash-target-tests"

stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT

for d in bin sbin usr/bin usr/sbin usr/share/motordash/pictures lib/modules dev proc sys run tmp etc var/lib \
         app/bin app/data app/event media; do
    mkdir -p "$stage/$d"
done
cp /bin/busybox "$stage/bin/busybox"
cp "$TOP/scripts/vm/init.sh" "$stage/init"
cp "$KERNEL"/modules/*.ko "$KERNEL/modules/load.list" "$stage/lib/modules/"
cp "$TOP"/tests/pictures/*.png "$stage/usr/share/motordash/pictures/"

for p in $PROGRAMS; do
    # Without their debug information: a quarter of the size to load (symbols stay).
    strip --strip-debug -o "$stage/app/bin/$p" "$BIN/$p"
    # The libraries where the dynamic loader looks for them, the loader itself included.
    ldd "$BIN/$p" | awk '/=> \// { print $3 } /^\t\// { print $1 }'
done | sort -u | while read -r lib; do
    cp -L --parents "$lib" "$stage"
done

# Uncompressed: unpacking is quick, decompressing is not on an emulated processor.
(cd "$stage" && find . | cpio -o -H newc --quiet) > "$OUT.new"
mv "$OUT.new" "$OUT"
