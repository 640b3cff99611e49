#!/usr/bin/env bash
# The real player under xvfb-run, driven by key presses, on a stand-in
# decoder that records its file.  player_e2e.sh SCENARIO APP_DIR DEVICE_ROOT DECODER_DIR
set -uo pipefail
SCENARIO=$1 APP=$2 DEV=$3 DECODER=$4
SHOTS=$(dirname "$DEV")/e2e-shots VIDS=$DEV/mnt/SDCARD/Videos RUN=$DEV/tmp/kovani_player
CMD=$RUN/cmd STATUS=$RUN/status CONFIG=$DEV/mnt/UDISK/player.json LOG=$DEV/player.log ARGS=$APP/avworker.args
PID=
# The desktop build's device folder, which ./kovani run uses too: leave nothing behind.
trap 'rm -rf "$DEV" "$ARGS"' EXIT
SELECT=105  # Right Ctrl: by name xdotool would send the left one

fail() {
    echo "FAIL [$SCENARIO]: $*"; ps -C avworker -o pid,stat,args
    [ -n "$PID" ] && window_report
    tail -n 25 "$LOG" 2>/dev/null
    [ -n "$PID" ] && kill -KILL "$PID" 2>/dev/null
    killall -q avworker
    exit 1
}

# wait_for SECONDS DESCRIPTION COMMAND...
wait_for() {
    local end=$((SECONDS + $1)) what=$2
    shift 2
    until "$@"; do
        [ $SECONDS -ge $end ] && fail "timed out waiting for $what"
        sleep 0.1
    done
}

# A killed decoder may linger as a zombie.
decoder_running() { ps -C avworker -o stat= | grep -qv '^Z'; }
cmd_is() { [ "$(cat "$CMD" 2>/dev/null)" = "$1" ]; }
decoder_got() { [ -f "$ARGS" ] && [ "$(tr '\0' '\n' < "$ARGS")" = "$1" ]; }
log_has() { grep -qF -- "$1" "$LOG"; }
# Keys pressed while a file opens (over a second) would reach the window of
# that moment: wait until its picture rectangle, the last step, was sent.
opened() { grep -E "exec cmd: avworker|setdisplayrect" "$LOG" | tail -n1 | grep -qF "setdisplayrect"; }
wait_opened() { syslog_present && sleep 2 || wait_for 10 "$1 to open" opened; }
syslog_present() { [ -S /dev/log ]; }
expect_log() { syslog_present || log_has "$1" || fail "log lacks: $1"; }

press() { for key; do xdotool key "$key"; sleep 0.3; done; }
shot() { mkdir -p "$SHOTS" && import -window root "$SHOTS/$1.png"; }

setup_device() {
    killall -q avworker
    rm -rf "$DEV" "$ARGS"
    mkdir -p "$VIDS/sub" "$RUN" "$DEV/mnt/UDISK"
    for f in a.mp4 b.mp4 c.mp4; do echo video > "$VIDS/$f"; done
}

# What the display holds when the player's window cannot be found.
window_report() {
    echo "display $DISPLAY; player $(kill -0 "$PID" 2>/dev/null && echo running || echo gone)"
    xwininfo -root -tree 2>&1 | grep -E '"|error' | head -n 8
}

start_player() {
    (cd "$APP" && PATH="$DECODER:$PATH" exec ./kovani_player "$@" >>"$LOG" 2>&1) &
    PID=$!
    # A sanitizer build on a loaded machine may take seconds to start.
    wait_for 20 "the player window" xdotool search --name '^Main$'
    xdotool windowfocus --sync "$(xdotool search --name '^Main$' | head -n1)" 2>/dev/null
    syslog_present || wait_for 10 "the folder to load" log_has "loaddir "
    sleep 0.5
}

player_gone() { ! kill -0 "$PID" 2>/dev/null; }
expect_exit_zero() {
    wait_for 10 "the player to exit" player_gone
    wait "$PID"
    local rc=$?
    grep -qE "ERROR: (Address|Leak|Thread)Sanitizer|runtime error:" "$LOG" &&
        fail "sanitizer report: $(grep -m1 -E 'Sanitizer|runtime error:' "$LOG")"
    [ $rc -eq 0 ] || fail "exit status $rc"
    PID=
}

# Keys from the keyboard through the whole program; the settings kept at exit.
keys_and_settings() {
    setup_device
    start_player -d "$VIDS"
    press Down space  # entries: sub, a.mp4, b.mp4, c.mp4
    wait_for 10 "a.mp4 to start" decoder_got "$VIDS/a.mp4"
    wait_opened a.mp4
    wait_for 10 "play" cmd_is play
    expect_log 'setdisplayrect : echo "win 650 85 610 360"'

    press Return
    wait_for 5 "pause" cmd_is pause

    press Escape Down Right Control_L
    wait_for 5 "the 4:3 rectangle" cmd_is "win 715 85 480 360"

    press Control_L space
    expect_exit_zero
    expect_log "quit mediaplayer"
    for member in '"ratio":	1' '"rotation":	0' '"speed":	4' "\"dir\":	\"$VIDS\""; do
        grep -qF -- "$member" "$CONFIG" || fail "player.json lacks $member: $(cat "$CONFIG")"
    done
    decoder_running && fail "decoder left running"
}

terminate_while_playing() {
    setup_device
    start_player -d "$VIDS"
    press Down Down space
    wait_for 10 "b.mp4 to start" decoder_got "$VIDS/b.mp4"
    wait_opened b.mp4
    kill -TERM "$PID"
    expect_exit_zero
    grep -qF "\"dir\":	\"$VIDS\"" "$CONFIG" || fail "folder not saved on SIGTERM: $(cat "$CONFIG")"
    decoder_running && fail "decoder left running"
}

# Play-on through decoders whose first and only report is "completed" (a
# clip shorter than a report period), PLAY_ON_COUNT of them (10 unless set),
# then a SIGTERM to the player while its decoder ignores SIGTERM. Every video
# starts once, in order; one that does not follow within 8 s of the last is
# a stall, counted and got past with R; no decoder outlives the player.
started() { if syslog_present; then decoder_got "$1"; else log_has "exec cmd: avworker $1 &"; fi; }
play_on() {
    setup_device
    rm -rf "${VIDS:?}"/*
    local count=${PLAY_ON_COUNT:-10} i stalls=0 file
    for i in $(seq -w 1 "$count"); do echo video > "$VIDS/v$i-completes.mp4"; done
    echo video > "$VIDS/w-ignores-term.mp4"
    start_player -d "$VIDS"
    press space
    for i in $(seq -w 1 "$count") w; do
        file=$VIDS/v$i-completes.mp4
        [ "$i" = w ] && file=$VIDS/w-ignores-term.mp4
        local end=$((SECONDS + 8))
        until started "$file"; do
            if [ $SECONDS -ge $end ]; then
                stalls=$((stalls + 1))
                echo "stall before $file"
                press BackSpace
                end=$((SECONDS + 8))
            fi
            sleep 0.1
        done
    done
    echo "play-on: $count completion-only videos, $stalls stalls"
    [ "$stalls" -eq 0 ] || fail "$stalls stalls in $count videos"
    if ! syslog_present; then
        local starts
        starts=$(grep -c "exec cmd: avworker" "$LOG")
        [ "$starts" -eq $((count + 1)) ] || fail "$starts starts for $((count + 1)) videos"
    fi
    wait_opened w-ignores-term.mp4
    kill -TERM "$PID"
    expect_exit_zero
    expect_log "avworker still runs 2000 ms after SIGTERM, killing it"
    decoder_running && fail "decoder left running"
}

# shot_share NAME X Y W H: a screenshot; $share of the rectangle and $outside
# pixels beyond it in the clip's colours.
shot_share() {
    shot "$1"
    read -r share outside < <(/usr/bin/python3 "$(dirname "$0")/clip_colours.py" "$SHOTS/$1.png" "${@:2}")
}
at_least() { awk -v a="$1" -v b="$2" 'BEGIN { exit !(a >= b) }'; }
# shot_until SECONDS WHAT CONDITION NAME X Y W H: screenshots until CONDITION
# (a test of $share and $outside) holds: the decoder and the interface each
# take their own time to show a change.
shot_until() {
    local end=$((SECONDS + $1)) what=$2 condition=$3
    shift 3
    until shot_share "$@" && eval "$condition"; do
        [ $SECONDS -ge $end ] && fail "$what: share $share, $outside pixels outside the rectangle"
        sleep 0.2
    done
}

# The real decoder's picture (magenta left, blue right) shows only where the
# interface is transparent.
video_plane() {
    setup_device
    rm -f "$VIDS"/*.mp4
    ffmpeg -loglevel error -y -f lavfi -i "color=c=0xFF00FF:size=320x360:rate=30" \
        -f lavfi -i "color=c=0x0000FF:size=320x360:rate=30" -filter_complex hstack -t 30 \
        -c:v libx264 -preset ultrafast -pix_fmt yuv420p "$VIDS/pattern.mp4" || fail "ffmpeg"
    DECODER=$APP
    start_player -d "$VIDS"
    press Down space  # pattern.mp4
    wait_for 30 "the decoder to play" grep -q '"playing"' "$STATUS"
    shot_until 15 "the picture does not fill the video rectangle alone" \
        'at_least "$share" 0.85 && [ "$outside" -eq 0 ]' plane-1-windowed 650 85 610 360

    press Escape
    shot_until 10 "the picture shows through the settings popup" '[ "$share" = "0.000" ]' \
        plane-2-settings 0 0 1280 720
    press Control_L

    press "$SELECT"
    wait_for 5 "fullscreen" cmd_is "win 0 0 1280 720"
    # Until the panel hides by itself.
    shot_until 15 "the picture does not fill the screen" 'at_least "$share" 0.97' plane-3-fullscreen 0 0 1280 720
    press Control_L
    wait_for 5 "windowed again" cmd_is "win 650 85 610 360"

    press Control_L space
    expect_exit_zero
    decoder_running && fail "decoder left running"
    expect_log "removed"
}

case "$SCENARIO" in
    keys_and_settings | terminate_while_playing | video_plane | play_on) "$SCENARIO" ;;
    *) fail "unknown scenario" ;;
esac
killall -q avworker
echo "PASS [$SCENARIO]"
