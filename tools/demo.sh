#!/bin/sh
# Masters the demonstration song in three styles and prints what that did to its levels.
# Needs build/vanta and build/render_song; `make demo` builds them.
set -eu
cd "$(dirname "$0")/.."

score=resources/demo/song.score
folder=build/demo
song=$folder/song.wav
styles="Modern Transparent Aggressive"

for program in vanta render_song; do
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
build/vanta measure "$@" --csv --quiet | awk -F, '
    NR == 1 { for (i = 1; i <= NF; i++) column[$i] = i; next }
    NR == 2 { printf "%-20s  %11s  %11s  %9s  %8s  %11s\n", "file", "sample peak", "true peak", "RMS", "crest", "loudness" }
    function of(name) { return $column[name] }
    {
        sub(".*/", "", $1)
        printf "%-20s  %6.2f dBFS  %6.2f dBTP  %6.1f dB  %5.1f dB  %6.2f LUFS\n", $1, of("sample_peak_dbfs"),
            of("true_peak_dbtp"), of("rms_dbfs"), of("crest_db"), of("integrated_lufs")
    }'
echo
echo "Listen to them in $(pwd)/$folder"
