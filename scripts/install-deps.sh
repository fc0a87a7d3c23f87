#!/bin/sh
# Installs what motordash needs to build and test on Debian 12. Idempotent and
# silent when everything is already there.
set -eu

PACKAGES="build-essential cmake pkg-config g++ \
libgtest-dev libgmock-dev libbenchmark-dev \
libfreetype-dev libsocketcan-dev libsysfs-dev libts-dev libpng-dev zlib1g-dev \
clang-14 libclang-rt-14-dev \
python3 chromium"

. "$(dirname "$0")/packages.sh"
# shellcheck disable=SC2086
missing=$(packages_missing $PACKAGES)

# Node.js may come from elsewhere than Debian; any node with npm serves the browser test.
command -v node >/dev/null 2>&1 || missing="$missing nodejs"
command -v npm >/dev/null 2>&1 || missing="$missing npm"

if [ -n "$missing" ]; then
    # shellcheck disable=SC2086
    packages_install $missing
fi

# From the npm registry, each pinned by its lock file: the browser test's driver, and the
# chart library that the simulator's page embeds when it is built.
TOP="$(dirname "$0")/.."
for needed in tests/e2e/node_modules/playwright-core tools/sim/web/node_modules/uplot; do
    if [ ! -d "$TOP/$needed" ]; then
        (cd "$TOP/${needed%/node_modules/*}" && npm ci --silent --no-audit --no-fund >/dev/null)
    fi
done
