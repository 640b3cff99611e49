#!/usr/bin/env bash
# Black-box test of the player: the real program in a real X server, real key
# presses, a stand-in decoder that records the file it was started with.
#   player_e2e.sh SCENARIO APP_DIR DEVICE_ROOT DECODER_DIR
# Run under xvfb-run. Screenshots go to DEVICE_ROOT/../e2e-shots.
set -uo pipefail
SCENARIO=$1
APP=$2
DEV=$3
DECODER=$4
SHOTS=$(dirname "$DEV")/e2e-shots
VIDS=$DEV/mnt/SDCARD/Videos
CMD=$DEV/tmp/kovani_player/cmd
STATUS=$DEV/tmp/kovani_player/status
CONFIG=$DEV/mnt/UDISK/player.json
LOG=$DEV/player.log
ARGS=$APP/avworker.args
PID=
# The device folder is the desktop build's own, which ./kovani run uses too:
# leave nothing of a scenario's settings behind for it.
trap 'rm -rf "$DEV" "$ARGS"' EXIT
# Select is Right Ctrl. By name, xdotool sends the first keycode bound to
# Control, which is the left one; the keycode itself is unambiguous.
SELECT=105

fail() {
    echo "FAIL [$SCENARIO]: $*"
    echo "--- decoder processes"; ps -C avworker -o pid,stat,args
    echo "--- last log lines"; tail -n 25 "$LOG" 2>/dev/null
    [ -n "$PID" ] && kill -KILL "$PID" 2>/dev/null
    killall -q avworker
    exit 1
}

# wait_for SECONDS DESCRIPTION COMMAND...: polls until COMMAND succeeds.
wait_for() {
    local limit=$1 what=$2
    shift 2
    local end=$((SECONDS + limit))
    until "$@"; do
        [ $SECONDS -ge $end ] && fail "timed out waiting for $what"
        sleep 0.1
    done
}

# A killed decoder may linger as a zombie where nothing reaps orphans.
decoder_running() { ps -C avworker -o stat= | grep -qv '^Z'; }
cmd_is() { [ "$(cat "$CMD" 2>/dev/null)" = "$1" ]; }
decoder_got() { [ -f "$ARGS" ] && [ "$(tr '\0' '\n' < "$ARGS")" = "$1" ]; }
log_has() { grep -qF -- "$1" "$LOG"; }
# Opening a file blocks the player for over a second; keys pressed meanwhile
# would all reach the window of that moment. This waits until the file's
# picture rectangle was sent, the last step of opening it.
opened() { grep -E "exec cmd: avworker|setdisplayrect" "$LOG" | tail -n1 | grep -qF "setdisplayrect"; }
wait_opened() { syslog_present && sleep 2 || wait_for 10 "$1 to open" opened; }
# Log lines only reach the file where no system log takes them.
syslog_present() { [ -S /dev/log ]; }
expect_log() { syslog_present || log_has "$1" || fail "log lacks: $1"; }

press() {
    xdotool key --delay 80 "$@"
    sleep 0.3
}

shot() {
    mkdir -p "$SHOTS"
    import -window root "$SHOTS/$1.png"
}

setup_device() {
    killall -q avworker
    rm -rf "$DEV" "$ARGS"
    mkdir -p "$VIDS/sub" "$DEV/tmp/kovani_player" "$DEV/mnt/UDISK"
    for f in a.mp4 b.mp4 c.mp4; do echo video > "$VIDS/$f"; done
}

start_player() {
    (cd "$APP" && PATH="$DECODER:$PATH" exec ./kovani_player "$@" >>"$LOG" 2>&1) &
    PID=$!
    wait_for 10 "the player window" xdotool search --name '^Main$'
    xdotool windowfocus --sync "$(xdotool search --name '^Main$' | head -n1)" 2>/dev/null
    syslog_present || wait_for 10 "the folder to load" log_has "loaddir "
    sleep 0.5
}

expect_exit_zero() {
    local end=$((SECONDS + 10))
    while kill -0 "$PID" 2>/dev/null; do
        [ $SECONDS -ge $end ] && fail "player did not exit"
        sleep 0.1
    done
    wait "$PID"
    local rc=$?
    # A sanitizer build reports into the player's log; any report fails.
    if grep -qE "ERROR: (Address|Leak|Thread)Sanitizer|runtime error:" "$LOG"; then
        fail "sanitizer report: $(grep -m1 -E 'Sanitizer|runtime error:' "$LOG")"
    fi
    [ $rc -eq 0 ] || fail "exit status $rc"
    PID=
}

play_status() {
    printf '{"status":"%s","duration":60000,"position":%d,"volume":10,"audiotrack":0}' "$1" "$2" > "$STATUS.tmp"
    mv "$STATUS.tmp" "$STATUS"
}

keys_and_settings() {
    setup_device
    start_player -d "$VIDS"
    shot 1-browser
    # Entries: sub, a.mp4, b.mp4, c.mp4. A on a.mp4 plays it in the window.
    press Down
    press space
    wait_for 10 "a.mp4 to start" decoder_got "$VIDS/a.mp4"
    wait_opened a.mp4
    wait_for 10 "play" cmd_is play
    expect_log 'setdisplayrect : echo "win 650 85 610 360"'
    play_status playing 12000
    sleep 1
    shot 2-windowed-playing

    press Return
    wait_for 5 "pause" cmd_is pause
    press Return
    wait_for 5 "resume" cmd_is play

    press "$SELECT"
    wait_for 5 "fullscreen" cmd_is "win 0 0 1280 720"
    press Right
    shot 3-fullscreen-panel
    press Control_L
    wait_for 5 "windowed again" cmd_is "win 650 85 610 360"

    press BackSpace
    wait_for 10 "b.mp4 (R)" decoder_got "$VIDS/b.mp4"
    wait_opened b.mp4
    wait_for 10 "play of b.mp4" cmd_is play

    play_status playing 59000
    sleep 1.2
    play_status completed 60000
    wait_for 10 "c.mp4 after completion" decoder_got "$VIDS/c.mp4"
    expect_log "exec cmd: avworker $VIDS/c.mp4 &"
    wait_opened c.mp4

    press Escape
    press Down
    press Right
    shot 4-settings
    press Control_L
    wait_for 5 "the 4:3 rectangle" cmd_is "win 715 85 480 360"

    press Control_L
    shot 5-quit-question
    press space
    expect_exit_zero
    expect_log "quit mediaplayer"
    for member in '"ratio":	1' '"rotation":	0' '"speed":	4' "\"dir\":	\"$VIDS\""; do
        grep -qF -- "$member" "$CONFIG" || fail "player.json lacks $member: $(cat "$CONFIG")"
    done
    decoder_running && fail "decoder left running"

    # Without options the saved folder opens again.
    : > "$LOG"
    start_player
    syslog_present || log_has "loaddir $VIDS " || fail "saved folder not reopened"
    kill -TERM "$PID"
    expect_exit_zero
}

swapped_confirm() {
    setup_device
    echo '{"bconfirm": 1}' > "$DEV/mnt/UDISK/system.json"
    start_player -d "$VIDS"
    press Down
    press Control_L
    wait_for 10 "B to confirm" decoder_got "$VIDS/a.mp4"
    wait_opened a.mp4
    wait_for 10 "play" cmd_is play
    press space
    press Control_L
    expect_exit_zero
}

terminate_while_playing() {
    setup_device
    start_player -d "$VIDS"
    press Down
    press Down
    press space
    wait_for 10 "b.mp4 to start" decoder_got "$VIDS/b.mp4"
    wait_opened b.mp4
    kill -TERM "$PID"
    expect_exit_zero
    grep -qF "\"dir\":	\"$VIDS\"" "$CONFIG" || fail "folder not saved on SIGTERM: $(cat "$CONFIG")"
    decoder_running && fail "decoder left running"
}

# clip_share SHOT X Y W H: "share-inside count-outside" of the clip's colours.
clip_share() { /usr/bin/python3 "$(dirname "$0")/clip_colours.py" "$SHOTS/$1.png" "$2" "$3" "$4" "$5"; }
at_least() { awk -v a="$1" -v b="$2" 'BEGIN { exit !(a >= b) }'; }

# The real decoder on a clip of known colours (magenta left, blue right): its
# picture shows through the interface only where the interface is
# transparent, as the device's display engine composites it.
video_plane() {
    setup_device
    rm -f "$VIDS"/*.mp4
    ffmpeg -loglevel error -y -f lavfi -i "color=c=0xFF00FF:size=320x360:rate=30" \
        -f lavfi -i "color=c=0x0000FF:size=320x360:rate=30" -filter_complex hstack -t 30 \
        -c:v libx264 -preset ultrafast -pix_fmt yuv420p "$VIDS/pattern.mp4" || fail "ffmpeg"
    DECODER=$APP
    start_player -d "$VIDS"
    # Entries: sub, pattern.mp4.
    press Down
    press space
    wait_for 15 "the decoder to play" grep -q '"playing"' "$STATUS"
    sleep 1.5
    shot plane-1-windowed
    read -r share outside < <(clip_share plane-1-windowed 650 85 610 360)
    # A 16:9 picture fitted into 610 x 360 leaves thin black bars.
    at_least "$share" 0.85 || fail "the picture does not fill the video rectangle: $share"
    [ "$outside" -eq 0 ] || fail "$outside pixels of the picture outside the video rectangle"

    press Escape
    sleep 0.5
    shot plane-2-settings
    read -r share outside < <(clip_share plane-2-settings 0 0 1280 720)
    [ "$share" = "0.000" ] || fail "the picture shows through the settings popup: $share"
    press Control_L

    press "$SELECT"
    wait_for 5 "fullscreen" cmd_is "win 0 0 1280 720"
    # The panel hides by itself after a while; then the picture is all.
    sleep 2.5
    shot plane-3-fullscreen
    read -r share outside < <(clip_share plane-3-fullscreen 0 0 1280 720)
    at_least "$share" 0.97 || fail "the picture does not fill the screen: $share"
    press Control_L
    wait_for 5 "windowed again" cmd_is "win 650 85 610 360"

    press Control_L
    press space
    expect_exit_zero
    decoder_running && fail "decoder left running"
    expect_log "removed"
}

case "$SCENARIO" in
    keys_and_settings | swapped_confirm | terminate_while_playing | video_plane) "$SCENARIO" ;;
    *) fail "unknown scenario" ;;
esac
killall -q avworker
echo "PASS [$SCENARIO]"
