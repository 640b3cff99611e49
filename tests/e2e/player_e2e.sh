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

case "$SCENARIO" in
    keys_and_settings | swapped_confirm | terminate_while_playing) "$SCENARIO" ;;
    *) fail "unknown scenario" ;;
esac
killall -q avworker
echo "PASS [$SCENARIO]"
