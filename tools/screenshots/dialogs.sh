#!/usr/bin/env bash
# Renders the console's small dialogs and the message boxes, each page of them, under a private
# Xvfb into docs/screenshots/. Needs a built tst_dialogs and a CJK font (fonts-wqy-microhei).
# Usage: tools/screenshots/dialogs.sh [build folder, default build/dev]
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/dev}
mkdir -p "$root/docs/screenshots"
export ZORVANE_SCREENSHOTS=$root/docs/screenshots QT_QPA_PLATFORM=xcb
export ASAN_OPTIONS=detect_leaks=0
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME=$home XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data XDG_CACHE_HOME=$home/cache
export ZORVANE_CONFIG=$home/config/none.ini
"$root/tests/xvfb-run-test" "$build/tests/dialogs/tst_dialogs" screenshots -silent
