#!/bin/sh
# Draws the demonstration song, limited, in every mode of the display: the pictures of docs/display.md.
# Needs build/vanta and build/render_song; `make display-pictures` builds them.
set -eu
cd "$(dirname "$0")/.."

song=build/demo/song.wav
mkdir -p build/demo docs/display
[ -e "$song" ] || build/render_song resources/demo/song.score "$song"
for mode in slow-down fast slow infinite off; do
    build/vanta plot "$song" -o "docs/display/$mode.png" --style Modern --gain 9 --output-level -1 \
        --mode "$mode" --at 15 --size 800x480 --force
done
build/vanta plot "$song" -o docs/display/loudness.png --style Modern --gain 9 --output-level -1 \
    --set "Loudness Meter Target=-14" --meter-scale loudness --mode fast --at 15 --size 1064x638 --force
build/vanta plot "$song" -o docs/display/k-14.png --style Modern --gain 9 --output-level -1 \
    --meter-scale k-14 --mode infinite --size 1064x638 --force
