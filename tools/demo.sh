#!/bin/sh
# Masters the demonstration song in three styles and prints what that did to its levels.
# Needs build/vanta, build/render_song and build/level_table; `make demo` builds them.
set -eu
cd "$(dirname "$0")/.."

score=resources/demo/song.score
folder=build/demo
song=$folder/song.wav
styles="Modern Transparent Aggressive"

for program in vanta render_song level_table; do
    [ -x "build/$program" ] || { echo "build/$program is missing: run 'make demo'" >&2; exit 1; }
done
mkdir -p "$folder"

# A changed score or synthesiser is another song.
if [ ! -e "$song" ] || [ -n "$(find "$score" build/render_song -newer "$song")" ]; then
    build/render_song "$score" "$song"
fi

set -- "$song"
for style in $styles; do
    build/vanta render "$song" "$folder/song-$style.wav" --style "$style" \
        --gain 9 --output-level -1 --true-peak on --force
    set -- "$@" "$folder/song-$style.wav"
done

echo
echo "Before ($(basename "$song")) and after 9 dB of gain into a ceiling of -1 dBTP:"
echo
build/level_table "$@"
echo
echo "Listen to them in $(pwd)/$folder"
