#!/usr/bin/env bash
# scripts/run's handling of what it starts, with stand-ins for the build and the three programs
# (they note their arguments and environment and stay up until told): which helpers start
# with and without a receiver and with services configured elsewhere, that quitting Zorvane or
# interrupting the script stops them all, and that a second run only brings Zorvane forward.
# Usage: tst_run.sh SOURCE_TREE. Skips (77) when the services' default ports are in use here.
set -euo pipefail
src=$1
work=$(mktemp -d "${XDG_RUNTIME_DIR:-/tmp}/run.XXXXXX")
cleanup() {
  local pid
  # Whatever the script under test left running.
  if [ -e "$work/ever-started" ]; then
    sed -n 's/^[a-z]* \([0-9][0-9]*\) .*/\1/p' "$work/ever-started" | while read -r pid; do
      kill -TERM "$pid" 2>/dev/null || true
    done
  fi
  rm -rf "$work"
}
trap cleanup EXIT
failures=0
fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}

for port in $(seq 9721 9728); do
  if (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
    echo "SKIP: port $port is in use on this machine"
    exit 77
  fi
done

root=$work/root
release=$root/build/release
mkdir -p "$root/scripts" "$root/packaging" "$release/src" "$release/tools/services" \
  "$release/tools/mouse-window" "$work/bin" "$work/sys/class/hidraw"
cp "$src/scripts/run" "$root/scripts/run"
cp "$src/packaging/70-zorvane.rules" "$root/packaging/"
printf '#!/bin/sh\n' >"$root/scripts/bootstrap"
# shellcheck disable=SC2016  # expanded by the stand-in
printf '#!/bin/sh\necho "cmake $*" >>"%s/cmake.log"\n' "$work" >"$work/bin/cmake"
chmod +x "$root/scripts/bootstrap" "$work/bin/cmake"
touch "$release/build.ninja"

# A helper that notes "NAME PID ARGS" and its device socket, says ready, and stays until killed.
helper() {
  cat >"$2" <<EOF
#!/bin/bash
echo "$1 \$\$ \$* socket=\${ZORVANE_DEVICE_SOCKET:-none}" | tee -a "$work/ever-started" >>"$work/started"
$3
trap 'echo "$1 \$\$ stopped" >>"$work/started"; exit 0' TERM
while :; do sleep 0.05; done
EOF
  chmod +x "$2"
}
# shellcheck disable=SC2016  # expanded by the stand-ins
{
  helper services "$release/tools/services/zorvane-services" 'printf "engine: %s\nready\n" "$2"'
  helper window "$release/tools/mouse-window/mouse-window" 'echo "ready $1"'
}
# Zorvane: a second start in the same runtime folder only asks the first to come forward, as
# long as the first is alive (one ended by a signal leaves its note behind, as a crashed
# program leaves nothing that holds the next start back). A script run directly (not through
# env) keeps its name, so pgrep finds it as the program.
cat >"$release/src/zorvane" <<EOF
#!/bin/bash
if kill -0 "\$(cat "\$XDG_RUNTIME_DIR/zorvane-up" 2>/dev/null)" 2>/dev/null; then
  echo "raise \$*" >>"$work/started"
  exit 0
fi
echo "zorvane \$\$ \$* socket=\${ZORVANE_DEVICE_SOCKET:-none}" | tee -a "$work/ever-started" >>"$work/started"
echo \$\$ >"\$XDG_RUNTIME_DIR/zorvane-up"
trap 'rm -f "\$XDG_RUNTIME_DIR/zorvane-up"; exit 143' TERM
until [ -e "$work/quit-zorvane" ]; do sleep 0.05; done
rm -f "$work/quit-zorvane" "\$XDG_RUNTIME_DIR/zorvane-up"
exit 3
EOF
chmod +x "$release/src/zorvane"

export PATH=$work/bin:$PATH ZORVANE_SYSFS=$work/sys XDG_RUNTIME_DIR=$work/runtime
export ZORVANE_CONFIG=$work/zorvane.ini HOME=$work/home DISPLAY=:0
mkdir -m 700 "$XDG_RUNTIME_DIR"
unset ZORVANE_BACKEND_URL ZORVANE_GATEWAY_HOST ZORVANE_DEVICE_SOCKET

# Waits until a line matching the pattern has been noted.
noted() {
  for _ in $(seq 1 200); do
    grep -q "$1" "$work/started" 2>/dev/null && return 0
    sleep 0.05
  done
  return 1
}
count() { grep -c "$1" "$work/started" 2>/dev/null || true; }
pids_of() { sed -n "s/^$1 \\([0-9]*\\) [^s].*/\\1/p" "$work/started"; }
all_gone() {
  local pid
  for _ in $(seq 1 100); do
    local alive=0
    for pid in $(pids_of services) $(pids_of window) $(pids_of zorvane); do
      kill -0 "$pid" 2>/dev/null && alive=1
    done
    [ $alive = 0 ] && return 0
    sleep 0.05
  done
  return 1
}
# Runs scripts/run in the background, in a process group of its own as a terminal would.
start_run() {
  rm -f "$work/started"
  set -m
  "$root/scripts/run" "$@" >"$work/run.out" 2>&1 &
  run_pid=$!
  set +m
  if ! noted '^zorvane '; then
    echo "FAIL: zorvane did not start: $(cat "$work/run.out")" >&2
    exit 1
  fi
}
# Waits for the script; its status in run_status.
finish_run() {
  run_status=0
  wait "$run_pid" || run_status=$?
}

# No receiver: the stand-ins, the virtual mouse and Zorvane on its socket, which is short and
# private; options after -- reach Zorvane.
start_run -- --minimized
socket=$(sed -n 's/^window [0-9]* \([^ ]*\) .*/\1/p' "$work/started")
grep -q "^services [0-9]* --engine sphinx " "$work/started" || fail "services not started with sphinx"
if [ -z "$socket" ] || [ ${#socket} -ge 107 ]; then fail "socket path '$socket'"; fi
[[ $socket == "$XDG_RUNTIME_DIR"/* ]] || fail "socket $socket outside the runtime folder"
grep -q "^zorvane [0-9]* --minimized socket=$socket\$" "$work/started" || fail "zorvane: $(cat "$work/started")"

# A second run while Zorvane runs brings it forward and starts nothing else.
"$root/scripts/run" -- --again >"$work/second.out" 2>&1 || fail "second run: $(cat "$work/second.out")"
grep -q '^raise --again' "$work/started" || fail "no raise: $(cat "$work/started")"
if [ "$(count '^services [0-9]* --')" != 1 ] || [ "$(count '^window [0-9]* /')" != 1 ]; then
  fail "second helpers: $(cat "$work/started")"
fi

# Quitting Zorvane stops the helpers and the script ends with Zorvane's status.
touch "$work/quit-zorvane"
finish_run
[ "$run_status" = 3 ] || fail "run's status $run_status is not zorvane's"
all_gone || fail "helpers left after zorvane quit"
[ ! -e "$(dirname "$socket")" ] || fail "socket folder left behind"

# Ctrl+C on the terminal: the whole group gets SIGINT; the helpers and Zorvane stop.
start_run --engine scripted
grep -q "^services [0-9]* --engine scripted " "$work/started" || fail "--engine scripted not passed"
kill -INT -- "-$run_pid"
finish_run
[ "$run_status" = 130 ] || fail "interrupted run's status $run_status"
all_gone || fail "processes left after Ctrl+C: $(cat "$work/started")"

# A known receiver plugged in: no virtual mouse, Zorvane on the real device; --virtual
# overrides.
mkdir -p "$work/sys/class/hidraw/hidraw0/device" "$work/sys/class/hidraw/hidraw7/device"
echo "HID_ID=0003:0000046D:0000C52B" >"$work/sys/class/hidraw/hidraw0/device/uevent"
printf 'DRIVER=hid-generic\nHID_ID=0003:00003151:00004011\n' >"$work/sys/class/hidraw/hidraw7/device/uevent"
start_run
[ "$(count '^window ')" = 0 ] || fail "virtual mouse started with a receiver plugged in"
grep -q '^zorvane [0-9]*  *socket=none$' "$work/started" || fail "zorvane given a socket: $(cat "$work/started")"
grep -q 'receiver 3151:4011 found (/dev/hidraw7)' "$work/run.out" || fail "receiver not reported: $(cat "$work/run.out")"
touch "$work/quit-zorvane"
finish_run
start_run --virtual
[ "$(count '^window ')" = 1 ] || fail "--virtual did not start the virtual mouse"
touch "$work/quit-zorvane"
finish_run
rm -r "$work/sys/class/hidraw/hidraw7"

# Services configured elsewhere: no stand-ins; on this machine, they start.
printf '[gateway]\nhost=127.0.0.1\n[backend]\nurl="https://backend.example.net/"\n' >"$ZORVANE_CONFIG"
start_run
[ "$(count '^services ')" = 0 ] || fail "stand-ins started though the backend is elsewhere"
grep -q 'backend/url=' "$work/run.out" || fail "the outside address is not named: $(cat "$work/run.out")"
touch "$work/quit-zorvane"
finish_run
printf '[backend]\nurl=http://localhost:9722\n' >"$ZORVANE_CONFIG"
start_run
[ "$(count '^services ')" = 1 ] || fail "stand-ins not started for a loopback backend"
touch "$work/quit-zorvane"
finish_run
all_gone || fail "processes left at the end"

[ "$failures" = 0 ] || exit 1
echo "PASS"
