#!/bin/sh
# Installs what motordash needs to build and test on Debian 12. Idempotent and
# silent when everything is already there.
set -eu

PACKAGES="build-essential cmake pkg-config g++ \
libgtest-dev libgmock-dev libbenchmark-dev \
libfreetype-dev libsocketcan-dev libsysfs-dev libts-dev libpng-dev zlib1g-dev \
clang-14 libclang-rt-14-dev \
python3 chromium"

# Installed for this machine's architecture: with the armhf libraries of `make test-arm`
# beside them, a library has a line for each.
ARCH=$(dpkg --print-architecture)
missing=""
for p in $PACKAGES; do
    dpkg-query -W -f='${binary:Package} ${db:Status-Abbrev}\n' "$p" 2>/dev/null |
        awk -v p="$p" -v a="$p:$ARCH" '($1 == p || $1 == a) && $2 == "ii" { found = 1 } END { exit !found }' ||
        missing="$missing $p"
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
    # A list that fails to refresh (the armhf one of `make test-arm`, a mirror mid-sync)
    # need not stop the install: the packages' own lists are usually there.
    $SUDO apt-get update -qq || true
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
