#!/bin/sh
# Installs what `make test-vm` needs besides the build's own packages: the virtual
# machine, the static shell of its initramfs and the tools that pack its images.
# Idempotent and silent when everything is already there.
set -eu

PACKAGES="qemu-system-x86 qemu-utils busybox-static cpio e2fsprogs xz-utils zstd"

. "$(dirname "$0")/packages.sh"
# shellcheck disable=SC2086
missing=$(packages_missing $PACKAGES)
if [ -n "$missing" ]; then
    # shellcheck disable=SC2086
    packages_install $missing
fi

# ---- ARM (`make test-arm`): Debian's cross compiler, the armhf libraries through
# multiarch, and the user-mode emulator that runs the armhf unit tests.
ARM_TOOLS="crossbuild-essential-armhf qemu-user"
ARM_LIBRARIES="libfreetype-dev:armhf libpng-dev:armhf zlib1g-dev:armhf libgtest-dev:armhf libgmock-dev:armhf
libbenchmark-dev:armhf libts-dev:armhf libsocketcan-dev:armhf libsysfs-dev:armhf"

# shellcheck disable=SC2086
arm_missing=$(packages_missing $ARM_TOOLS $ARM_LIBRARIES)

if [ -n "$arm_missing" ]; then
    echo "Installing:$arm_missing"
    export DEBIAN_FRONTEND=noninteractive
    if ! dpkg --print-foreign-architectures | grep -qx armhf; then
        as_root dpkg --add-architecture armhf
    fi
    as_root apt-get update -qq || true
    # A library installed for both architectures must be the same version in both. When
    # the armhf list lags the amd64 one (its security list failed to refresh), pin the
    # amd64 copy to the armhf version, and its source's other packages with it where that
    # is no downgrade, rather than give up or remove them.
    pins=$(mktemp)
    trap 'rm -f "$pins"' EXIT
    # shellcheck disable=SC2086
    same=$(apt-cache depends --recurse --no-recommends --no-suggests --no-conflicts --no-breaks \
               --no-replaces --no-enhances $ARM_LIBRARIES | sed -n 's/^\([a-z0-9][^ ]*:armhf\)$/\1/p' |
           sort -u | xargs apt-cache show --no-all-versions |
           awk '/^Package:/ {p = $2; s = $2} /^Source:/ {s = $2} /^Multi-Arch: same/ {print p "/" s}')
    for ps in $same; do echo "${ps%/*} ${ps%/*}:armhf"; done | xargs apt-cache policy | awk -v same="$same" '
        BEGIN { n = split(same, list, " "); for (i = 1; i <= n; i++) { split(list[i], f, "/"); src[f[1]] = f[2] } }
        /^[^ ]/          { name = $1; sub(/:$/, "", name) }
        /^  Installed: / { have[name] = $2 }
        /^  Candidate: / { want[name] = $2 }
        END { for (p in src) { v = want[p ":armhf"]
                  if (have[p] != "(none)" && v != "(none)" && want[p] != v)
                      printf "Package: %s\nPin: version %s\nPin-Priority: 1001\n\n" \
                             "Package: src:%s\nPin: version %s\nPin-Priority: 990\n\n", p, v, src[p], v } }' >"$pins"
    # shellcheck disable=SC2086
    as_root apt-get install -y -qq --no-install-recommends --allow-downgrades -o Dir::Etc::Preferences="$pins" \
        $arm_missing >/dev/null
fi
