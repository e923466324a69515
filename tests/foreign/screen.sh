# Sourced: a virtual screen with a window manager, and hands for it. Everything that asks the screen gives up in time: a
# window that is not there would be waited for without end.
open_screen() {
    Xvfb -displayfd 1 -screen 0 1600x1000x24 > "$WORK/display" 2> "$WORK/xvfb.log" &
    screen=$!
    for _ in $(seq 50); do
        [ -s "$WORK/display" ] && break
        sleep 0.2
    done
    export DISPLAY=:$(cat "$WORK/display")
    openbox > /dev/null 2>&1 &
    manager=$!
    sleep 1
}

close_screen() {
    kill "$manager" "$screen" 2> /dev/null || true
}

at() { timeout 5 xdotool mousemove "$1" "$2"; }

press() { # X Y [BUTTON]
    at "$1" "$2"
    timeout 5 xdotool click "${3:-1}"
}

press_twice() { # X Y
    at "$1" "$2"
    timeout 5 xdotool click --repeat 2 --delay 80 1
}

keys() { timeout 5 xdotool key "$@"; }

# Ctrl+S in the window that has the keyboard, until the file is written anew.
save_by_keys() { # FILE
    touch -d '1 minute ago' "$1"
    keys ctrl+s
    for _ in $(seq 50); do
        sleep 0.2
        [ -n "$(find "$1" -newermt '30 seconds ago')" ] && { sleep 0.5; return; }
    done
    echo "$1 is not saved"
    picture lost
    return 1
}

# The number of the window with this title, once it is there.
window_called() { # TITLE
    local found
    for _ in $(seq 100); do
        found=$(timeout 5 xdotool search --onlyvisible --name "$1" 2> /dev/null | tail -1) || true
        [ -n "$found" ] && { echo "$found"; return; }
        sleep 0.2
    done
    echo "no window is called $1" >&2
    picture lost
    return 1
}

bring_up() { # TITLE
    timeout 5 xdotool windowactivate --sync "$(window_called "$1")"
    sleep 0.5
}

# Where our interface begins on the screen, once it is there: it alone has this size, Medium at scale 1.
find_interface() {
    local place
    for _ in $(seq 100); do
        place=$(timeout 5 xwininfo -root -tree | grep ' 950x570' | tail -1 |
            sed -E 's/.* \+(-?[0-9]+)\+(-?[0-9]+)$/\1 \2/') || true
        [ -n "$place" ] && { read -r left top <<< "$place"; sleep 2; return; }
        sleep 0.2
    done
    echo "the interface does not appear"
    picture lost
    return 1
}

# The gain slider by so many pixels, as a hand does it.
drag_gain() { # PIXELS
    at $((left + 37)) $((top + gain_at))
    timeout 5 xdotool mousedown 1
    for step in 1 2 3 4 5; do
        sleep 0.15
        at $((left + 37)) $((top + gain_at - $1 * step / 5))
    done
    timeout 5 xdotool mouseup 1
    gain_at=$((gain_at - $1))
    sleep 1
}
gain_at=295 # the thumb at 0 dB

compare_slots() {
    press $((left + 426)) $((top + 18))
    sleep 1
}

picture() { # NAME
    timeout 20 import -window root "$PICTURES/$1.png"
}

expect() { # WHAT VALUE CONDITION
    awk -v v="$2" "BEGIN { exit !($3) }" || { echo "$1 is $2, not $3"; picture failed; exit 1; }
    echo "ok: $1: $2"
}
