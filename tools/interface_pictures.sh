#!/bin/sh
# Draws the interface in every size, form, layout and scale, and with what can be open in it, to be looked at one by one:
# build/interface-pictures. Needs build/vanta-app and build/render_song; `make interface-pictures` builds them.
set -eu
cd "$(dirname "$0")/.."

out=build/interface-pictures
song=$out/song.wav
mkdir -p "$out"
# No settings of whoever draws.
XDG_CONFIG_HOME=$(mktemp -d)
export XDG_CONFIG_HOME XDG_DATA_HOME="$XDG_CONFIG_HOME"
trap 'rm -r "$XDG_CONFIG_HOME"' EXIT

[ -e "$song" ] || build/render_song resources/demo/song.score "$song"
[ -e "$out/mono.wav" ] || sox "$song" "$out/mono.wav" remix -
# Each channel quieter than most before it, so that none hides behind another.
[ -e "$out/5.1.wav" ] || sox "$out/mono.wav" "$out/5.1.wav" remix 1 1v.9 1v.8 1v.3 1v.5 1v.4
[ -e "$out/7.1.2.wav" ] || sox "$out/mono.wav" "$out/7.1.2.wav" remix 1 1v.9 1v.8 1v.3 1v.5 1v.4 1v.4 1v.3 1v.3 1v.2

# picture NAME LAYOUT OPTION...
picture() {
    name=$1
    layout=$2
    shift 2
    file=$out/$layout.wav
    [ "$layout" = stereo ] && file=$song
    build/vanta-app "$file" --layout "$layout" --gain 9 --output-level -1 --at 20 "$@" \
        --screenshot "$out/$name.png" --force
}

for scale in 1 1.5 2; do
    for size in compact small medium large; do
        for layout in mono stereo 5.1 7.1.2; do
            picture "$size-$layout-$scale" "$layout" --size "$size" --scale "$scale"
            [ "$size" = compact ] && continue
            picture "$size-$layout-$scale-open" "$layout" --size "$size" --scale "$scale" --dither "24 Bits" \
                --set "Show Advanced=Show" --set "Meter Scale=Loudness" --set "Loudness Meter Target=-14"
        done
    done
    picture "compact-loudness-$scale" stereo --size compact --scale "$scale" --set "Meter Scale=Loudness"
    for thing in dither learn value hint welcome about; do
        for size in compact small; do
            picture "open-$thing-$size-$scale" stereo --size $size --scale "$scale" --open $thing --dither "16 Bits"
        done
    done
    picture "wide-$scale" stereo --size 2560x1440 --scale "$scale" --set "Show Advanced=Show"
    # Everything that can be switched on, and all that is dimmed by it.
    for size in compact small; do
        picture "all-on-$size-$scale" stereo --size $size --scale "$scale" --style Safe --set "Show Advanced=Show" \
            --set "Filter DC Offset=On" --set "Side Chain Triggering=On" --set "Unity Gain=On" \
            --set "Audition Limiting=On" --set "Lock Output=Locked" --set "Meter Scale=K-14"
    done
done
ls "$out"/*.png | wc -l
