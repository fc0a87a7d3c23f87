#!/bin/sh
# Starts the virtual CAN bus and the dash in a device root (made if missing), and ends
# both on Ctrl-C. BIN is the build's bin folder.
set -eu
BIN=$1
ROOT=$2
[ -d "$ROOT" ] || "$BIN/motordash-sim" init "$ROOT"
ROOT=$(cd "$ROOT" && pwd)
"$BIN/motordash-can" bus "$ROOT" &
BUS=$!
trap 'kill $BUS 2>/dev/null; wait $BUS 2>/dev/null || true' EXIT
trap 'exit 0' INT TERM
echo "Device root: $ROOT"
echo "  watch the bus:    $BIN/motordash-can dump $ROOT can0"
echo "  see the screen:   $BIN/motordash-sim screenshot $ROOT screen.png"
echo "  press a key:      $BIN/motordash-sim key $ROOT 1 press"
DASH_ROOT="$ROOT" "$BIN/motordash"
