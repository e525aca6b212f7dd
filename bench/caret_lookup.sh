#!/usr/bin/env bash
# Measures the caret lookup against a GTK 3 editor holding 20 000 lines, the caret in the
# middle, on a private X server, session bus and accessibility bus. With --stuck another
# application, asked first, stops answering on the bus (SIGSTOP) before the measurement.
# Run: bench/caret_lookup.sh build/release [--stuck] [N]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
shift
if [ "${INNER:-}" != 1 ]; then
  INNER=1 exec "$here/../tests/xvfb-run-test" dbus-run-session -- "$0" "$build" "$@" 2>/dev/null
fi
stuck=0
if [ "${1:-}" = --stuck ]; then stuck=1; shift; fi
export NO_AT_BRIDGE=0
work=$(mktemp -d)
pids=()
trap 'kill -CONT "${pids[@]}" 2>/dev/null; kill "${pids[@]}" 2>/dev/null; rm -rf "$work"' EXIT
# The editors' input: held open here, so that they run until the end.
mkfifo "$work/input"
exec 5<>"$work/input"

# The editor of the test tree, or the benchmark's copy in a tree built without the tests.
editor_program=$build/tests/caret/gtk_editor
[ -x "$editor_program" ] || editor_program=$build/bench/bench_gtk_editor
# Starts the editor with $1 lines; returns once it says its caret is placed and focused.
editor() {
  "$editor_program" "$1" <&5 > "$work/$1" 2>/dev/null &
  pids+=($!)
  for _ in $(seq 300); do grep -q ready "$work/$1" && return; sleep 0.1; done
  echo "caret_lookup.sh: the editor did not start" >&2
  exit 1
}

if [ "$stuck" = 1 ]; then
  editor 10
  stuck_pid=${pids[-1]}
fi
editor 20000
echo "editor caret: $(cat "$work/20000") (x, y, height)"
if [ "$stuck" = 1 ]; then kill -STOP "$stuck_pid"; fi
"$build/bench/caret_lookup" "${1:-200}"
