#!/usr/bin/env bash
# A scripted session of the player for machines without a display: run under
# xvfb-run, it browses, plays, pauses, goes fullscreen, opens the settings and
# quits, leaving numbered screenshots in OUT. The real decoder plays; its
# picture is composited beneath the interface as on the device.
#   demo_session.sh APP_DIR LIBRARY OUT
set -uo pipefail
APP=$1
LIBRARY=$2
OUT=$3
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
