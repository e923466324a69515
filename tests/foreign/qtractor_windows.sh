#!/usr/bin/env bash
# Our interface in qtractor, as CLAP and as LV2: a hand moves Gain, the host's own list follows, the host takes a
# step back, and the session comes back with both compare slots.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/screen.sh"
session=$WORK/windows.qtr
cat > "$session" <<SESSION
<!DOCTYPE qtractor-session>
<session name="windows" version="0.9.31">
 <properties><directory>$WORK</directory><sample-rate>48000</sample-rate><tempo>120</tempo></properties>
 <devices><audio-engine><audio-bus name="Master" mode="duplex"><channels>2</channels>
  <output-plugins>
   <plugin type="CLAP"><filename>$VANTA_PLUGINS/vanta.clap</filename><index>0</index><label>Vanta 2</label><activated>1</activated></plugin>
   <plugin type="LV2"><filename>urn:quillmark:vanta2:stereo</filename><index>0</index><activated>1</activated></plugin>
  </output-plugins>
 </audio-bus></audio-engine></devices>
</session>
SESSION
gcc -shared -fPIC -o "$WORK/no_sequencer.so" "$here/no_sequencer.c"
clap_row=47 # of the mixer's window, in the strip of the master output
lv2_row=61
ours='Vanta 2.*Master Out'

start() {
    LD_PRELOAD=$WORK/no_sequencer.so timeout 600 qtractor "$session" > "$WORK/qtractor.log" 2>&1 &
    host=$!
    window_called 'windows.qtr' > /dev/null
    settle 1600x1000+0+0
    if ! timeout 5 xdotool search --onlyvisible --name '^Mixer' > /dev/null; then
        bring_up 'windows.qtr'
        keys F9
    fi
    mixer=$(window_called '^Mixer')
    timeout 5 xdotool windowsize "$mixer" 640 426 windowmove "$mixer" 940 540
    settle 1600x1000+0+0
}

save() {
    bring_up 'windows.qtr'
    save_by_keys "$session"
}

stop() {
    kill "$host"
    sleep 1
    kill -9 "$host" 2> /dev/null || true
    wait "$host" 2> /dev/null || true
}

# Opened by a double click in the mixer. What opens comes up behind the mixer now and then.
show() { # ROW
    for _ in 1 2 3; do
        bring_up '^Mixer'
        timeout 5 xdotool mousemove --window "$mixer" 510 "$1" click --repeat 2 --delay 80 1
        find_interface 20 2> /dev/null && break
    done
    bring_up "$ours"
    find_interface
    gain_at=295
}

# The order of a parameter's attributes is another in each run.
saved_gain() { # TYPE
    save
    sed -n "/plugin type=\"$1\"/,/<\/plugin>/s/.* name=\"Gain\"[^>]*>\([^<]*\)<.*/\1/p" "$session" | head -1
}

hide() {
    bring_up "$ours"
    timeout 5 wmctrl -c 'Vanta 2'
    for _ in $(seq 50); do
        [ -z "$(interface_place)" ] && return
        sleep 0.2
    done
}

open_screen
trap 'kill $host 2> /dev/null || true; close_screen' EXIT
start
for format in CLAP LV2; do
    case $format in CLAP) at_row=$clap_row ;; LV2) at_row=$lv2_row ;; esac
    show "$at_row"
    drag_gain 120
    first=$(saved_gain $format)
    expect "$format: Gain of slot A in qtractor's session" "$first" "v > 1 && v < 6"
    bring_up "$ours"
    if [ $format = LV2 ]; then # of a CLAP's own window it keeps no steps
        drag_gain 40
        expect "$format: Gain turned further" "$(saved_gain $format)" "v > $first + 0.5"
        bring_up 'windows.qtr'
        keys ctrl+z
        expect "$format: Gain after qtractor's undo" "$(saved_gain $format)" "v > $first - 0.01 && v < $first + 0.01"
        bring_up "$ours"
    fi
    compare_slots
    gain_at=295
    type_gain 7.5
    second=$(saved_gain $format)
    expect "$format: Gain of slot B, as it was typed" "$second" "v > 7.49 && v < 7.51"
    bring_up "$ours"
    picture "qtractor-${format,,}"
    hide
    eval "${format}_first=$first ${format}_second=$second"
done
stop
start
for format in CLAP LV2; do
    case $format in
        CLAP) at_row=$clap_row first=$CLAP_first second=$CLAP_second ;;
        LV2) at_row=$lv2_row first=$LV2_first second=$LV2_second ;;
    esac
    show "$at_row"
    compare_slots
    expect "$format: Gain of slot A after the session has come back" "$(saved_gain $format)" "v > $first - 0.001 && v < $first + 0.001"
    bring_up "$ours"
    compare_slots
    expect "$format: Gain of slot B then" "$(saved_gain $format)" "v > $second - 0.001 && v < $second + 0.001"
    hide
done
stop
echo "ok: both windows in qtractor"
