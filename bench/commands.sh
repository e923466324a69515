#!/bin/sh
# Times whole commands on the demonstration song: ours beside what else a mastering script would call. Prints the
# fastest of several runs each, in seconds. Needs build/vanta, build/render_song, build/loudness_peer, ffmpeg and sox:
# `make bench-commands` sees to them.
set -eu
cd "$(dirname "$0")/.."

runs=${RUNS:-3}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
build/render_song resources/demo/song.score "$work/song.wav" > /dev/null
one=$work/one.wav
for i in 1 2 3 4 5 6 7 8; do set -- "$@" "$work/song.wav"; done
sox "$@" "$one"
mkdir "$work/list"
for i in 01 02 03 04 05 06 07 08 09 10 11 12; do cp "$one" "$work/list/$i.wav"; done

# The fastest of the runs, in seconds.
fastest() {
    best=
    for run in $(seq "$runs"); do
        rm -rf "$work/out" && mkdir "$work/out"
        /usr/bin/time -o "$work/seconds" -f %e sh -c "$1" > /dev/null 2>&1
        seconds=$(tail -1 "$work/seconds")
        if [ -z "$best" ] || [ "$(echo "$seconds < $best" | bc)" = 1 ]; then best=$seconds; fi
    done
    echo "$best"
}

row() {
    printf '| %s | %s | %s |\n' "$1" "$(fastest "$2")" "$(fastest "$3")"
}

# Each of the list, one after the other, as such scripts do.
each() {
    echo "for f in $work/list/*.wav; do $1; done"
}
ebur128='ffmpeg -nostdin -v error -i "$f" -af ebur128=peak=true -f null -'
# Two passes of loudnorm, as ffmpeg-normalize calls them.
loudnorm='ffmpeg -nostdin -hide_banner -i "$f" -af loudnorm=I=-11:TP=-1:LRA=20:print_format=json -f null - 2> '$work'/j;
value() { sed -n "s/.*\"$1\" : \"\(.*\)\".*/\1/p" '$work'/j; };
ffmpeg -nostdin -v error -y -i "$f" -af loudnorm=I=-11:TP=-1:LRA=20:measured_I=$(value input_i):measured_TP=$(value input_tp):measured_LRA=$(value input_lra):measured_thresh=$(value input_thresh):offset=$(value target_offset) -ar 48000 -c:a pcm_s24le '$work'/out/$(basename "$f")'

printf '| command | one file, %s s | twelve files |\n| --- | --- | --- |\n' "$(soxi -D "$one" | cut -d. -f1)"
row "vanta measure" "build/vanta measure $one" "build/vanta measure $work/list"
row "vanta measure --jobs 1" "build/vanta measure $one --jobs 1" "build/vanta measure $work/list --jobs 1"
row "ffmpeg, ebur128 with true peaks" "f=$one; $ebur128" "$(each "$ebur128")"
row "libebur128 with true peaks" "build/loudness_peer $one" "build/loudness_peer $work/list/*.wav"
row "vanta render, with its report" "build/vanta render $one $work/out/o.wav --gain 9" \
    "build/vanta render $work/list --out-dir $work/out --gain 9"
row "vanta render --jobs 1" "build/vanta render $one $work/out/o.wav --gain 9" \
    "build/vanta render $work/list --out-dir $work/out --gain 9 --jobs 1"
row "vanta render --loudness -11 --max-true-peak -1" \
    "build/vanta render $one $work/out/o.wav --loudness -11 --max-true-peak -1" \
    "build/vanta render $work/list --out-dir $work/out --loudness -11 --max-true-peak -1"
printf '| ffmpeg, loudnorm in two passes | %s | - |\n' "$(fastest "f=$one; $loudnorm")"
