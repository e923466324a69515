#!/usr/bin/env bash
# Our interface in jalv.gtk3: a hand moves Gain, and the thumb follows.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/screen.sh"
open_screen
trap 'kill $host 2> /dev/null || true; close_screen' EXIT
timeout 120 jalv.gtk3 urn:quillmark:vanta2:stereo > "$WORK/jalv.log" 2>&1 &
host=$!
find_interface
drag_gain 120
picture jalv
echo "ok: Gain in jalv"
