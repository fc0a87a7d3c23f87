#!/bin/sh
# Debian's kernel for the test machine of `make test-vm`, fetched with apt and unpacked
# under OUT without installing anything on this machine:
#   OUT/PACKAGE/vmlinux      the kernel as a plain ELF image, which qemu boots directly
#                            and so spares the emulated processor its decompression
#   OUT/PACKAGE/modules/     the modules the machine needs and what they depend on,
#                            listed in load order in modules/load.list
# The kernel's release gets the build number a dash's kernel ends in (see below).
# Kept between runs; prints OUT/PACKAGE. A new Debian kernel is fetched when
# linux-image-amd64 moves on to one.
set -eu

OUT=${1:?usage: kernel.sh OUT}

# Whatever the machine has to offer, in this order: CAN controllers and raw sockets, the
# 16-bit DRM display (its helpers first, so that the init can give them parameters),
# the watchdog, the persistent disk, and last a memory framebuffer for the panel that
# no emulated display can drive.
MODULES="can-raw kvaser_pci drm drm_kms_helper cirrus i6300esb virtio_pci virtio_blk crc32c_generic ext4 vfb"

# The release of a dash's kernel ends in its build number ("5.10.0-dash-121"), which the
# start gate wants above 100; Debian's ends in the architecture.
DASH_BUILD=121

package() {
    apt-cache depends linux-image-amd64 2>/dev/null | awk '/Depends: linux-image-[0-9]/ { print $2; exit }'
}
pkg=$(package)
if [ -z "$pkg" ]; then
    apt-get update -qq >/dev/null 2>&1 || true
    pkg=$(package)
fi
[ -n "$pkg" ] || { echo "kernel.sh: apt knows no linux-image-amd64" >&2; exit 1; }

dir=$OUT/$pkg
if [ -f "$dir/ready" ]; then
    echo "$dir"
    exit 0
fi

rm -rf "$dir" "$OUT/unpack"
mkdir -p "$dir/modules" "$OUT/unpack"
(cd "$OUT/unpack" && apt-get download -qq "$pkg" 2>/dev/null)
dpkg-deb -x "$OUT/unpack/${pkg}_"*.deb "$OUT/unpack/tree"
release=${pkg#linux-image-}
tree=$OUT/unpack/tree/lib/modules/$release

# The bzImage is a decompressor followed by the xz stream of the kernel proper.
vmlinuz=$OUT/unpack/tree/boot/vmlinuz-$release
offset=$(LC_ALL=C grep -obUaP '\xfd7zXZ\x00' "$vmlinuz" | head -n 1 | cut -d: -f1)
[ -n "$offset" ] || { echo "kernel.sh: no xz stream in $vmlinuz" >&2; exit 1; }
tail -c +$((offset + 1)) "$vmlinuz" | xz -dc --single-stream > "$dir/vmlinux"

# The release text sits in the kernel's initial name record, after "Linux" and "(none)"
# in fields of 65 bytes; it is only what uname answers (modules check another copy).
python3 - "$dir/vmlinux" "$release" "$release-$DASH_BUILD" <<'EOF'
import sys
path, old, new = sys.argv[1], sys.argv[2].encode(), sys.argv[3].encode()
image = bytearray(open(path, 'rb').read())
head = b'Linux'.ljust(65, b'\0') + b'(none)'.ljust(65, b'\0')
record = head + old + b'\0'
found = 0
at = image.find(record)
while at >= 0:
    image[at + 130:at + 195] = new.ljust(65, b'\0')
    found += 1
    at = image.find(record, at + 1)
if not found or len(new) > 64:
    sys.exit('kernel.sh: no release record for %s in the kernel' % old.decode())
open(path, 'wb').write(image)
EOF

# Each module after what it depends on (the "depends" entry of its .modinfo section),
# decompressed if Debian shipped it compressed.
order=""
add() {
    local name file deps dep
    name=$(echo "$1" | tr - _)
    case " $order " in *" $name "*) return 0 ;; esac
    file=$(find "$tree/kernel" \( -name "$name.ko*" -o -name "$(echo "$name" | tr _ -).ko*" \) | head -n 1)
    [ -n "$file" ] || { echo "kernel.sh: no module $1 in $pkg" >&2; exit 1; }
    case "$file" in
        *.ko.xz) xz -dc "$file" > "$dir/modules/$name.ko" ;;
        *.ko.zst) zstd -qdc "$file" > "$dir/modules/$name.ko" ;;
        *) cp "$file" "$dir/modules/$name.ko" ;;
    esac
    deps=$(objcopy -O binary -j .modinfo "$dir/modules/$name.ko" /dev/stdout | tr '\0' '\n' | sed -n 's/^depends=//p')
    for dep in $(echo "$deps" | tr , ' '); do
        add "$dep"
    done
    order="$order $name"
}
for m in $MODULES; do
    add "$m"
done
for m in $order; do
    echo "$m"
done > "$dir/modules/load.list"
echo "$release-$DASH_BUILD" > "$dir/release"

rm -rf "$OUT/unpack"
touch "$dir/ready"
echo "$dir"
