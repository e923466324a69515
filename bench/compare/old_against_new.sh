#!/bin/sh
# Whether a faster program still computes the same: renders the music of the comparison with two builds of the command,
# every style at 1x, 2x and 4x, and prints how far apart they are. Exits with 1 if a render is further than it may.
# usage: bench/compare/old_against_new.sh OLD_VANTA NEW_VANTA [OPTION OF RENDER...]
# SECONDS_OF_MUSIC (10), GAIN in dB (6), JOBS (1). ROUNDED=1 renders with OLD_VANTA the music with the last bit of every
# sample turned as well: how much of a difference is rounding that a decision of the limiter has made grow.
set -eu
[ $# -ge 2 ] || { sed -n '4,6s/^# //p' "$0" >&2; exit 2; }
old=$1 new=$2
shift 2
compare=$(dirname "$0")/../../build/vanta_compare
[ -x "$compare" ] || { echo "build vanta_compare first: make bench-compare, or -DVANTA_BENCH_COMPARE=ON" >&2; exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$compare" music "$work" --seconds "${SECONDS_OF_MUSIC:-10}"

# PROGRAM MUSIC FOLDER [OPTIONS]: all renders of one side.
render() {
    program=$1 music=$2 folder=$3
    shift 3
    mkdir "$folder"
    for style in Transparent Punchy Dynamic Allround Aggressive Modern Bus Safe; do
        for factor in off 2x 4x; do
            "$program" render "$music/song.wav" "$music/bursts.wav" --out-dir "$folder" --name "{stem}, $style, $(echo $factor | sed s/off/1x/)" \
                --style "$style" --oversampling "$factor" --gain "${GAIN:-6}" --jobs "${JOBS:-1}" --subtype float "$@" > /dev/null
        done
    done
}
render "$old" "$work/plain" "$work/old" "$@"
render "$new" "$work/plain" "$work/new" "$@"
if [ -n "${ROUNDED:-}" ]; then render "$old" "$work/rounded" "$work/old_rounded" "$@"; fi
"$compare" null "$work/old" "$work/new" ${ROUNDED:+"$work/old_rounded"}
