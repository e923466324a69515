#!/usr/bin/env bash
# Our interface in jalv.gtk3: a hand moves Gain, and the thumb follows.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/screen.sh"
open_screen
trap 'kill $host 2> /dev/null; close_screen' EXIT
timeout 120 jalv.gtk3 urn:quillmark:vanta2:stereo > "$WORK/jalv.log" 2>&1 &
host=$!
find_interface
thumbs() { # NAME: the column in which the thumb moves
    timeout 20 import -window root -crop 60x200+$((left + 8))+$((top + 130)) +repage "$WORK/$1.png"
}
thumbs before
drag_gain 120
thumbs after
picture jalv
changed=$(compare -metric AE "$WORK/before.png" "$WORK/after.png" null: 2>&1 || true)
expect "pixels that Gain has changed in jalv" "$changed" "v > 500"
