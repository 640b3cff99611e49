#!/usr/bin/env bash
# Generates a small library of real, short videos for trying the player on a
# desktop: several picture sizes, one file with two audio tracks, a long file
# name, a CJK name and a sub-folder. Usage: make_demo_library.sh FOLDER
# Does nothing when FOLDER already holds the library.
set -euo pipefail
OUT=$1
STAMP=$OUT/.demo-library-v1
[ -f "$STAMP" ] && exit 0
rm -rf "$OUT"
mkdir -p "$OUT/Nature" "$OUT/Music"

# clip FILE SECONDS SIZE PATTERN [second tone]
clip() {
    local file=$1 seconds=$2 size=$3 pattern=$4 second=${5:-}
    local inputs=(-f lavfi -i "$pattern=size=$size:rate=25" -f lavfi -i "sine=frequency=440:sample_rate=44100")
    local maps=(-map 0:v -map 1:a)
    if [ -n "$second" ]; then
        inputs+=(-f lavfi -i "sine=frequency=$second:sample_rate=44100")
        maps+=(-map 2:a)
    fi
    ffmpeg -loglevel error -y "${inputs[@]}" "${maps[@]}" -t "$seconds" \
        -c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac -b:a 64k "$OUT/$file"
}

clip "Test pattern 16x9.mp4" 20 640x360 testsrc2
clip "Old TV 4x3.mkv" 15 480x360 smptebars
clip "Two audio tracks.mp4" 20 640x360 testsrc 880
clip "A very long file name that goes on and on to show how the list cuts labels that do not fit.mp4" 8 320x240 rgbtestsrc
clip "Nature/日本語のビデオ.mp4" 10 640x360 mandelbrot
clip "Nature/한국어 영상.mov" 6 360x360 life
clip "Music/音乐会 Concert.mkv" 12 640x360 cellauto
touch "$STAMP"
echo "demo library in $OUT"
