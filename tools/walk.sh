#!/bin/bash
# A newcomer's walk through vanta-app with mouse and keyboard, in an X server of its own: takes the pictures of
# docs/walk.md and checks on the way that each step did what it says. `make walk` builds what it needs.
# WALK_DISPLAY: the server's number, 78 unless told.
set -eu
cd "$(dirname "$0")/.."

out=docs/walk
home=$(mktemp -d)
export XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data DISPLAY=:${WALK_DISPLAY:-78}
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
export DBUS_SESSION_BUS_ADDRESS=disabled: NO_AT_BRIDGE=1
song=$home/song.wav
mkdir -p "$out" "$home/presets"
build/render_song resources/demo/song.score "$song" > /dev/null

Xvfb "$DISPLAY" -screen 0 1600x1000x24 -nolisten tcp 2> /dev/null &
server=$!
# A JACK server of its own, so that there is somewhere for a controller to be connected.
export JACK_DEFAULT_SERVER=walk$$ JACK_NO_START_SERVER=1
jackd -r -n "$JACK_DEFAULT_SERVER" -d dummy -r 48000 > "$home/jackd" 2>&1 &
jack=$!
cc tools/send_controller.c -o "$home/send" -ljack
app=
trap 'kill $app $jack $server 2> /dev/null || true; wait; rm -rf "$home"' EXIT
sleep 2

fail() { echo "walk: $*" >&2; exit 1; }
x() { timeout 10 xdotool "$@"; }
open() {
    build/vanta-app "$song" --software --scale 1 "$@" > "$home/log" 2>&1 &
    app=$!
    window=$(timeout 20 xdotool search --sync --name 'song.wav - Vanta 2' | head -n 1)
    [ -n "$window" ] || fail "no window opens"
    sleep 1
    x windowfocus "$window"
}
# click X Y [BUTTON]
click() { x mousemove "$1" "$2"; sleep 0.2; x click "${3:-1}"; sleep 0.5; }
keys() { for key in "$@"; do x key "$key"; sleep 0.25; done; }
shot() { timeout 10 import -window root -crop "${2:-800x508}+0+0" +repage "$out/$1.png"; }
# What of the window can be seen in a part of it, as one number.
seen() { timeout 10 import -window root -crop "$1" +repage -depth 8 rgb:- | cksum; }
size() { x getwindowgeometry "$window" | sed -n 's/.*Geometry: //p'; }
changed() { [ "$1" != "$2" ] || fail "$3"; }

open --size small
[ "$(size)" = 800x508 ] || fail "the window is $(size)"
sleep 3
shot 1-open
welcome=$(seen 60x20+560+304)
click 400 380
sleep 1
changed "$welcome" "$(seen 60x20+560+304)" "the welcome hint stays"

# A preset from the menu: the first of the first folder.
caption=$(seen 150x16+470+12)
click 545 19
keys Down Right
shot 2-presets
keys Return
sleep 1
changed "$caption" "$(seen 150x16+470+12)" "no preset was loaded"

# Gain, at the slider.
value=$(seen 40x20+14+170)
x mousemove 34 296 mousedown 1
for y in 280 260 240 220 200 180; do x mousemove 34 $y; sleep 0.1; done
x mouseup 1
sleep 3
shot 3-gain
changed "$value" "$(seen 40x20+14+170)" "Gain did not move"

# Compare with the input, and back.
button=$(seen 56x16+98+486)
click 124 494
sleep 2
x mousemove 500 300
shot 4-compare
changed "$button" "$(seen 56x16+98+486)" "Compare does not light up"
click 124 494

# Loudness.
meter=$(seen 40x20+555+400)
click 660 56
keys End Return
x mousemove 500 700  # away from what would give a hint
sleep 1
click 574 436
keys End Return
x mousemove 500 700
sleep 4
shot 5-loudness
changed "$meter" "$(seen 40x20+555+400)" "no loudness is shown"

# MIDI learn.
click 60 467
click 34 180
sleep 1
x mousemove 300 300
sleep 1
shot 6-learn
click 60 467
value=$(seen 40x20+14+170)
click 60 467
click 34 180
move() { timeout 10 "$home/send" vanta-app:midi_in 20 "$1" || fail "no controller can be connected"; sleep 1; }
move 40  # by which it is learned
click 60 467
move 20
changed "$value" "$(seen 40x20+14+170)" "the controller does not move Gain"
map=$(find "$home" -name MidiControllerMap.qmm -size +0)
[ -n "$map" ] || fail "the MIDI map was not saved"

# A preset of one's own, by the desktop's dialog.
mine=$home/presets/Mine.qmp
click 545 19
keys End Up Return
dialog=$(timeout 20 xdotool search --sync --onlyvisible --class zenity | tail -n 1)
[ -n "$dialog" ] || fail "no dialog opens"
sleep 2
timeout 10 import -window root -crop 1100x760+0+0 +repage "$out/7-save.png"
x windowfocus "$dialog" || true
x key ctrl+a
x type --delay 30 "$mine"
sleep 0.5
keys Return
sleep 2
[ -s "$mine" ] || fail "the preset was not saved"
build/vanta preset show "$mine" > "$home/mine"
grep -q '^Gain' "$home/mine" || fail "the preset has no Gain"
grep -Eq '^Gain +\+?0\.00' "$home/mine" && fail "the preset has not the Gain that was set"
x windowfocus "$window"

# What the meter says of the song up to its last second, and what is measured of a render with the same settings. The
# meter shows the level before Unity Gain, which Compare has switched on, takes anything back.
x mousemove 725 331
x key Home click 1
x mousemove 500 700
sleep 21
timeout 10 import -window root -crop 57x24+541+398 +repage -negate -colorspace Gray -resize 500% "$home/number.png"
shown=$(timeout 20 tesseract "$home/number.png" - --psm 7 -c tessedit_char_whitelist=-.0123456789 2> /dev/null | sed -n 's/^\(-[0-9]*\.[0-9]\).*/\1/p')
build/vanta render "$song" "$home/master.wav" --preset "$mine" --unity-gain off > /dev/null
measured=$(build/vanta measure "$home/master.wav" --json | sed -n 's/.*"integrated_lufs": *\(-[0-9.]*\).*/\1/p')
awk -v a="$shown" -v b="$measured" 'BEGIN { exit !(a < 0 && b < 0 && (a - b) ^ 2 <= 0.04) }' \
    || fail "the meter shows '$shown' LUFS, measured are '$measured'"

# A folder of one's own for presets, and no more hints: both are remembered.
click 545 19
keys End Right Down Down Down Return
dialog=$(timeout 20 xdotool search --sync --onlyvisible --class zenity | tail -n 1)
[ -n "$dialog" ] || fail "no dialog for the folder opens"
sleep 2
x windowfocus "$dialog" || true
keys ctrl+l ctrl+a
x type --delay 30 "$home/presets/"
sleep 0.5
keys Return
sleep 2
x windowfocus "$window"
click 754 19
keys Down Down Return
x mousemove 500 700
sleep 1
caption=$(seen 150x16+470+12)

# Another size, which is remembered with the rest.
click 784 467
keys End Up Return
sleep 2
[ "$(size)" = 1330x826 ] || fail "after the choice of Large the window is $(size)"
shot 8-resize 1330x826
x windowfocus "$window"
keys q
sleep 2
kill -0 "$app" 2> /dev/null && fail "q does not quit"
open
[ "$(size)" = 1330x826 ] || fail "the size was not remembered: $(size)"
sleep 2
timeout 10 import -window root -crop 1330x826+0+0 +repage "$home/again.png"
keys q
sleep 2

# Neither the welcome nor what was learned is for one time only.
open --size small --paused
sleep 2
changed "$welcome" "$(seen 60x20+560+304)" "the welcome hint comes again"
value=$(seen 40x20+14+286)
move 100
changed "$value" "$(seen 40x20+14+286)" "the learned controller was forgotten"
still=$(seen 400x140+200+310)
x mousemove 124 467
sleep 3
[ "$still" = "$(seen 400x140+200+310)" ] || fail "hints come again"
# The folder has one preset, the one that was saved there.
click 545 19
keys Down Return
x mousemove 500 700
sleep 1
[ "$caption" = "$(seen 150x16+470+12)" ] || fail "the preset folder was forgotten"
keys q
echo "the walk went well: $out"
