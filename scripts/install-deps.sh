#!/bin/sh
# Installs what motordash needs to build and test on Debian 12. Idempotent and
# silent when everything is already there.
set -eu

PACKAGES="build-essential cmake pkg-config g++ \
libgtest-dev libgmock-dev libbenchmark-dev \
libfreetype-dev libsocketcan-dev libsysfs-dev libts-dev libpng-dev zlib1g-dev \
python3 chromium"

missing=""
for p in $PACKAGES; do
    status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
    case "$status" in
        "install ok installed") ;;
        *) missing="$missing $p" ;;
    esac
done

# Node.js may come from elsewhere than Debian; any node with npm serves the browser test.
command -v node >/dev/null 2>&1 || missing="$missing nodejs"
command -v npm >/dev/null 2>&1 || missing="$missing npm"

if [ -n "$missing" ]; then
    echo "Installing:$missing"
    SUDO=""
    if [ "$(id -u)" -ne 0 ]; then
        SUDO="sudo"
    fi
    export DEBIAN_FRONTEND=noninteractive
    $SUDO apt-get update -qq
    # shellcheck disable=SC2086
    $SUDO apt-get install -y -qq --no-install-recommends $missing >/dev/null
fi

# From the npm registry, each pinned by its lock file: the browser test's driver, and the
# chart library that the simulator's page embeds when it is built.
TOP="$(dirname "$0")/.."
for needed in tests/e2e/node_modules/playwright-core tools/sim/web/node_modules/uplot; do
    if [ ! -d "$TOP/$needed" ]; then
        (cd "$TOP/${needed%/node_modules/*}" && npm ci --silent --no-audit --no-fund >/dev/null)
    fi
done
