#!/usr/bin/env bash
# Our interface in Ardour, as LV2 and as VST3: a hand moves Gain, the session has it, both compare slots come back.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/screen.sh"
rm -rf "$HOME/windows"
mkdir -p "$HOME/.vst3" "$HOME/.config/ardour7"
ln -sfn "$VANTA_PLUGINS/vanta.vst3" "$HOME/.vst3/vanta.vst3"
touch "$HOME/.config/ardour7/.a7" # it has greeted us already
cat > "$HOME/.config/ardour7/config" <<'CONFIG'
<?xml version="1.0" encoding="UTF-8"?>
<Ardour>
 <Config><Option name="hide-dummy-backend" value="0"/><Option name="try-autostart-engine" value="1"/></Config>
 <Extra><AudioMIDISetup><EngineStates>
  <State backend="None (Dummy)" driver="" device="Silence" input-device="" output-device="" sample-rate="48000"
   buffer-size="1024" n-periods="0" input-latency="0" output-latency="0" input-channels="0" output-channels="0" active="1"
   use-buffered-io="0" midi-option="1 in, 1 out, Silence" lru="1700000000"><MIDIDevices/></State>
 </EngineStates></AudioMIDISetup></Extra>
</Ardour>
CONFIG
LD_LIBRARY_PATH=/usr/lib/ardour7 timeout 60 /usr/lib/ardour7/ardour-vst3-scanner -f "$HOME/.vst3/vanta.vst3" > /dev/null 2>&1
timeout 60 ardour7-lua "$here/ardour_windows.lua" > "$WORK/ardour.log" 2>&1 || { tail -5 "$WORK/ardour.log"; exit 1; }

session=$HOME/windows/windows.ardour
lv2_row=240 # of the strip, below the noise
vst3_row=271

hide() { # TITLE
    timeout 5 wmctrl -c "$1"
    for _ in $(seq 50); do
        [ -z "$(interface_place)" ] && return
        sleep 0.2
    done
}

start() { # first or again
    timeout 600 ardour -n "$HOME/windows" > "$WORK/ardour.log" 2>&1 &
    host=$!
    main=$(window_called 'windows - Ardour')
    timeout 5 xdotool windowmove "$main" 0 0 windowsize "$main" 1500 900
    settle 1500x900+0+0
    if [ "$1" = again ]; then # our windows come back as well, over what is to be pressed
        for _ in $(seq 10); do
            timeout 5 wmctrl -c 'Master: Vanta 2' || true
            sleep 0.3
        done
    fi
    bring_up 'windows - Ardour'
    press 150 295 # the master track
    [ "$1" = again ] || keys shift+e # its strip, which comes back with the session
    settle 1500x900+0+0
}

stop() {
    kill "$host"
    wait "$host" 2> /dev/null || true
    pkill -f "ardour-7.*$HOME/windows" || true
    sleep 1
}

show() { # ROW TITLE
    for _ in 1 2 3; do
        bring_up 'windows - Ardour'
        press_twice 60 "$1"
        find_interface 20 2> /dev/null && break
    done
    bring_up "$2"
    find_interface
    gain_at=295
}

saved_gain() { # TYPE ATTRIBUTE
    bring_up 'windows - Ardour'
    save_by_keys "$session"
    sed -n "/type=\"$1\"/,/<\/Processor>/s/.*<Port $2 value=\"\([^\"]*\)\".*/\1/p" "$session" | head -1
}

open_screen
trap 'kill $host 2> /dev/null || true; pkill -f "$HOME/windows" || true; close_screen' EXIT
start first
for format in lv2 vst3; do
    case $format in
        lv2) row=$lv2_row title='stereo' port='symbol="gain"' ;;
        vst3) row=$vst3_row title='VST3' port='id="0"' ;;
    esac
    show "$row" "$title"
    drag_gain 120
    first=$(saved_gain $format "$port")
    expect "$format: Gain of slot A in Ardour's session" "$first" "v > 1 && v < 6"
    bring_up "$title"
    compare_slots
    gain_at=295
    type_gain 7.5
    second=$(saved_gain $format "$port")
    expect "$format: Gain of slot B, as it was typed" "$second" "v > 7.49 && v < 7.51"
    bring_up "$title"
    picture "ardour-$format"
    hide "$title"
    eval "${format}_first=$first ${format}_second=$second"
done
stop
start again
for format in lv2 vst3; do
    case $format in
        lv2) row=$lv2_row title='stereo' port='symbol="gain"' first=$lv2_first second=$lv2_second ;;
        vst3) row=$vst3_row title='VST3' port='id="0"' first=$vst3_first second=$vst3_second ;;
    esac
    show "$row" "$title"
    compare_slots
    expect "$format: Gain of slot A after the session has come back" "$(saved_gain $format "$port")" "v > $first - 0.001 && v < $first + 0.001"
    bring_up "$title"
    compare_slots
    expect "$format: Gain of slot B then" "$(saved_gain $format "$port")" "v > $second - 0.001 && v < $second + 0.001"
    hide "$title"
done
stop
echo "ok: both windows in Ardour"
