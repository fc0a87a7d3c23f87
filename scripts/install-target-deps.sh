#!/bin/sh
# Installs what `make test-vm` needs besides the build's own packages: the virtual
# machine, the static shell of its initramfs and the tools that pack its images.
# Idempotent and silent when everything is already there.
set -eu

PACKAGES="qemu-system-x86 qemu-utils busybox-static cpio e2fsprogs xz-utils zstd"

native=$(dpkg --print-architecture)
missing=""
for p in $PACKAGES; do
    # Installed for this machine's architecture (a package may be known for armhf too).
    dpkg-query -W -f='${binary:Package} ${db:Status-Abbrev}\n' "$p" 2>/dev/null | grep -qE "^$p(:$native)? ii" ||
        missing="$missing $p"
done

if [ -n "$missing" ]; then
    echo "Installing:$missing"
    SUDO=""
    if [ "$(id -u)" -ne 0 ]; then
        SUDO="sudo"
    fi
    export DEBIAN_FRONTEND=noninteractive
    # A list that fails to refresh (another architecture's, a mirror mid-sync) need not
    # stop the install: the packages' own lists are usually there.
    $SUDO apt-get update -qq || true
    # shellcheck disable=SC2086
    $SUDO apt-get install -y -qq --no-install-recommends $missing >/dev/null
fi

# ---- ARM (`make test-arm`): Debian's cross compiler, the armhf libraries through
# multiarch, and the user-mode emulator that runs the armhf unit tests.
ARM_TOOLS="crossbuild-essential-armhf qemu-user"
ARM_LIBRARIES="libfreetype-dev:armhf libpng-dev:armhf zlib1g-dev:armhf libgtest-dev:armhf libgmock-dev:armhf
libbenchmark-dev:armhf libts-dev:armhf libsocketcan-dev:armhf libsysfs-dev:armhf"

arm_missing=""
for p in $ARM_TOOLS $ARM_LIBRARIES; do
    status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
    case "$status" in
        "install ok installed") ;;
        *) arm_missing="$arm_missing $p" ;;
    esac
done

if [ -n "$arm_missing" ]; then
    echo "Installing:$arm_missing"
    SUDO=""
    if [ "$(id -u)" -ne 0 ]; then
        SUDO="sudo"
    fi
    export DEBIAN_FRONTEND=noninteractive
    if ! dpkg --print-foreign-architectures | grep -qx armhf; then
        $SUDO dpkg --add-architecture armhf
    fi
    $SUDO apt-get update -qq || true
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
    $SUDO apt-get install -y -qq --no-install-recommends --allow-downgrades -o Dir::Etc::Preferences="$pins" \
        $arm_missing >/dev/null
fi
