#!/usr/bin/env bash
# A scripted session of the player for machines without a display: run under
# xvfb-run, it browses, plays, pauses, goes fullscreen, opens the settings and
# quits, leaving numbered screenshots in OUT. The real decoder plays; its
# picture is composited beneath the interface as on the device. On the way
# the device tool changes the device's state, and the status bar is taken in
# each (charging, low battery, headphones, mute, Wi-Fi, hotspot).
#   demo_session.sh APP_DIR LIBRARY OUT DEVICE_TOOL
set -uo pipefail
APP=$1
LIBRARY=$2
OUT=$3
DEVICE=$4
LOG=$OUT/player.log
rm -rf "$OUT"
mkdir -p "$OUT"
N=0

shot() {
    N=$((N + 1))
    local file
    file=$(printf '%s/%02d-%s.png' "$OUT" "$N" "$1")
    import -window root "$file"
    echo "  $file"
}

# bar_shot NAME SETTING...: the device's new state, and the status bar's end
# of the top bar a second later.
bar_shot() {
    local name=$1
    shift
    "$DEVICE" "$@" >/dev/null
    sleep 1
    N=$((N + 1))
    local file
    file=$(printf '%s/%02d-status-%s.png' "$OUT" "$N" "$name")
    import -window root -crop 400x76+880+0 +repage "$file"
    echo "  $file ($*)"
}

press() {
    xdotool key --delay 80 "$@"
    sleep "${PAUSE:-0.6}"
}

(cd "$APP" && PATH="$APP:$PATH" exec ./kovani_player -d "$LIBRARY" >"$LOG" 2>&1) &
PID=$!
for _ in $(seq 100); do xdotool search --name '^Main$' >/dev/null 2>&1 && break; sleep 0.1; done
sleep 1.5
echo "screenshots:"
shot browser
bar_shot charging battery 64 charging
bar_shot low-battery battery 12 discharging
bar_shot headphones headphones on
bar_shot mute volume 0
bar_shot wifi volume 14 headphones off wifi -75
bar_shot hotspot hotspot on
"$DEVICE" reset >/dev/null
press Down
press Down
shot cursor-on-video
PAUSE=4 press space          # A: play
shot playing
PAUSE=1 press Return         # Start: pause
shot paused
PAUSE=1 press Return         # Start: resume
PAUSE=2 press 105            # Select (Right Ctrl): fullscreen
press Right                  # a step forward shows the panel
shot fullscreen
sleep 2                      # the panel hides: the picture alone
shot fullscreen-picture
PAUSE=1.5 press Control_L    # B: back to the window
press Escape                 # Menu: settings
press Down
press Right
shot settings
press Control_L
press Control_L              # back in the top folder: the quit question
shot quit-question
press space
for _ in $(seq 100); do kill -0 "$PID" 2>/dev/null || break; sleep 0.1; done
if kill -0 "$PID" 2>/dev/null; then
    kill -TERM "$PID"
    echo "player did not quit by itself"
fi
wait "$PID"
echo "player exit status $?; log in $LOG"
