#!/usr/bin/env bash
# The real player under xvfb-run while the device tool changes the device's
# state: each change shows in the status bar within a second, as the
# reference picture of that state in tests/e2e/status_bar/ has it.
#   status_bar_e2e.sh APP_DIR DEVICE_ROOT DEVICE_TOOL
# With KOVANI_WRITE_REFERENCES=1 (./kovani references) it writes the reference
# pictures instead (look at each).
# A mismatch leaves <state>.png and <state>_err.png (the differences) in
# e2e-shots beside the device folder.
set -uo pipefail
APP=$1 DEV=$2 TOOL=$3
REFS=$(cd "$(dirname "$0")" && pwd)/status_bar
SHOTS=$(dirname "$DEV")/e2e-shots VIDS=$DEV/mnt/SDCARD/Videos LOG=$DEV/player.log
# The status icons and the battery text: the right end of the top bar.
CROP=400x76+880+0
# Pixels that may differ (beyond a small colour distance) from the reference:
# a quarter of the least difference between two states (Wi-Fi levels, 83).
TOLERANCE=20
PID=
trap 'rm -rf "$DEV"' EXIT

fail() {
    echo "FAIL [status bar]: $*"; tail -n 20 "$LOG" 2>/dev/null
    [ -n "$PID" ] && kill -KILL "$PID" 2>/dev/null
    exit 1
}

nowMs() { echo $((${EPOCHREALTIME/./} / 1000)); }

# The pixels of the bar that differ from the reference of `state`.
differing() {
    compare -metric AE -fuzz 6% "$SHOTS/$1.png" "$REFS/$1.png" "$SHOTS/$1_err.png" 2>&1 >/dev/null |
        sed 's/ .*//'
}

# state NAME SETTING...: sets the state and waits for the bar to show it; a
# screenshot begun a second after the change must show it (LIMIT_MS).
state() {
    local name=$1 limit=${LIMIT_MS:-1000}
    shift
    "$TOOL" "$@" || fail "device tool: $*"
    local changed
    changed=$(nowMs)
    if [ "${KOVANI_WRITE_REFERENCES:-0}" = 1 ]; then
        sleep 1.5
        import -window root -crop "$CROP" +repage "$REFS/$name.png"
        echo "wrote $REFS/$name.png"
        return
    fi
    while true; do
        local began diff
        began=$(nowMs)
        import -window root -crop "$CROP" +repage "$SHOTS/$name.png"
        diff=$(differing "$name")
        if [[ "$diff" =~ ^[0-9]+$ ]] && [ "$diff" -le "$TOLERANCE" ]; then
            rm -f "$SHOTS/${name}_err.png"
            echo "ok: $name shown within $((began - changed)) ms"
            return
        fi
        [ $((began - changed)) -ge "$limit" ] &&
            fail "$name ($*) not shown within $limit ms: $diff pixels differ, see $SHOTS/${name}_err.png"
    done
}

rm -rf "$DEV" "$SHOTS"
mkdir -p "$VIDS" "$DEV/mnt/UDISK" "$SHOTS" "$REFS"
echo video > "$VIDS/a.mp4"
"$TOOL" reset || fail "device tool reset"
(cd "$APP" && exec ./kovani_player -d "$VIDS" >>"$LOG" 2>&1) &
PID=$!
for _ in $(seq 100); do xdotool search --name '^Main$' >/dev/null 2>&1 && break; sleep 0.1; done
xdotool search --name '^Main$' >/dev/null 2>&1 || fail "no player window"

# The player's first frame, however long its start takes; then each state
# from the one before it.
LIMIT_MS=10000 state start volume 14
state charging battery 57 charging
state full-on-charger battery 100
state low battery 15 discharging
state empty battery 3
state mute volume 0
state headphones volume 10 headphones on
state bluetooth bluetooth on
state wifi-strong headphones off bluetooth off wifi -55
state wifi-medium wifi -75
state wifi-weak wifi -85
state hotspot hotspot on
state start reset

kill -TERM "$PID"
for _ in $(seq 100); do kill -0 "$PID" 2>/dev/null || break; sleep 0.1; done
wait "$PID"
rc=$?
PID=
[ $rc -eq 0 ] || fail "player exit status $rc"
echo "PASS [status bar]"
