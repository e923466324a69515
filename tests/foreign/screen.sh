# Sourced: a virtual screen with a window manager, and hands for it. Everything that asks the screen gives up in time: a
# window that is not there would be waited for without end.
open_screen() {
    for _ in 1 2 3; do
        Xvfb -displayfd 1 -screen 0 1600x1000x24 > "$WORK/display" 2> "$WORK/xvfb.log" &
        screen=$!
        for _ in $(seq 100); do
            [ -s "$WORK/display" ] && break 2
            sleep 0.2
        done
        kill "$screen" # two servers that start at once may wait for each other
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
    for _ in 1 2 3; do
        keys ctrl+s
        for _ in $(seq 25); do
            sleep 0.2
            [ -n "$(find "$1" -newermt '30 seconds ago')" ] && { sleep 0.5; return; }
        done
    done
    echo "$1 is not saved" >&2
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

# On top of all others, and with the keyboard.
bring_up() { # TITLE
    local window
    window=$(window_called "$1")
    for _ in $(seq 20); do
        timeout 5 xdotool windowactivate "$window" 2> /dev/null || true
        sleep 0.3
        [ "$(timeout 5 xdotool getactivewindow 2> /dev/null)" = "$window" ] && return
    done
    echo "the window called $1 does not come up" >&2
    picture lost
    return 1
}

# Until a part of the screen has been the same for a while, or for some seconds if meters move there. A host still lays out
# its windows when they are there.
settle() { # GEOMETRY
    local now before=
    for _ in $(seq 10); do
        now=$(timeout 20 import -window root -crop "$1" +repage rgb:- | md5sum)
        [ "$now" = "$before" ] && return
        before=$now
        sleep 0.3
    done
}

# Where our interface is on the screen: it alone has this size, Medium at scale 1.
interface_place() {
    timeout 5 xwininfo -root -tree | grep ' 950x570' | tail -1 | sed -E 's/.* \+(-?[0-9]+)\+(-?[0-9]+)$/\1 \2/'
}

# Once it is there, and stays there.
find_interface() { # [TRIES]
    local place before=
    for _ in $(seq "${1:-100}"); do
        place=$(interface_place) || true
        if [ -n "$place" ] && [ "$place" = "$before" ]; then
            read -r left top <<< "$place"
            settle "950x570+$left+$top"
            return
        fi
        before=$place
        sleep 0.3
    done
    echo "the interface does not appear" >&2
    picture lost
    return 1
}

# Does something to the interface until a part of it has changed: on a busy machine a click may come before its window.
until_changed() { # GEOMETRY COMMAND...
    local geometry=$1 before=$WORK/before.png after=$WORK/after.png changed
    shift
    for _ in 1 2 3; do
        settle "$geometry"
        timeout 20 import -window root -crop "$geometry" +repage "$before"
        "$@"
        sleep 0.5
        settle "$geometry"
        timeout 20 import -window root -crop "$geometry" +repage "$after"
        changed=$(compare -metric AE "$before" "$after" null: 2>&1 || true)
        awk -v n="$changed" 'BEGIN { exit !(n > 20) }' && return
        read -r left top <<< "$(interface_place)"
    done
    echo "nothing changes at $geometry" >&2
    picture lost
    return 1
}

move_gain() { # PIXELS
    at $((left + 37)) $((top + gain_at))
    timeout 5 xdotool mousedown 1
    for step in 1 2 3 4 5; do
        sleep 0.15
        at $((left + 37)) $((top + gain_at - $1 * step / 5))
    done
    timeout 5 xdotool mouseup 1
}

# The gain slider by so many pixels, as a hand does it.
drag_gain() { # PIXELS
    at $((left + 37)) $((top + gain_at)) # what lights up under the pointer is no change
    until_changed "60x200+$((left + 8))+$((top + 130))" move_gain "$1"
    gain_at=$((gain_at - $1))
}
# Into the field below the slider that a double click opens. Elsewhere space and letters are the host's shortcuts.
type_gain() { # DECIBELS
    local field="120x120+$left+$((top + gain_at))"
    at $((left + 37)) $((top + gain_at))
    until_changed "$field" press_twice $((left + 37)) $((top + gain_at))
    timeout 10 xdotool type --delay 60 "r $1"
    keys Home Delete Delete Return
    settle "$field"
}
gain_at=295 # the thumb at 0 dB

compare_slots() {
    at $((left + 426)) $((top + 18))
    until_changed "40x24+$((left + 406))+$((top + 6))" press $((left + 426)) $((top + 18))
}

picture() { # NAME
    timeout 20 import -window root "$PICTURES/$1.png"
}

expect() { # WHAT VALUE CONDITION
    awk -v v="$2" "BEGIN { exit !($3) }" || { echo "$1 is $2, not $3"; picture failed; exit 1; }
    echo "ok: $1: $2"
}
