#!/usr/bin/env bash
# Ardour's scanner takes the VST3 plug-in, and its scripting shell works with all of them.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$HOME/session"
mkdir -p "$HOME/.vst3"
ln -sfn "$VANTA_PLUGINS/vanta.vst3" "$HOME/.vst3/vanta.vst3"
export LD_LIBRARY_PATH=/usr/lib/ardour7
timeout 60 /usr/lib/ardour7/ardour-vst3-scanner -f -v "$HOME/.vst3/vanta.vst3" > "$WORK/scan.log" 2>&1 ||
    { cat "$WORK/scan.log"; exit 1; }
grep -E 'Info|Error|Warning|bus|Bus|inputs|outputs' "$WORK/scan.log" || true
timeout 300 ardour7-lua "$here/ardour.lua" > "$WORK/ardour.log" 2>&1 || true
grep -E '^(ok|FAILED|scanned|Error|all passed)' "$WORK/ardour.log"
grep -q '^all passed' "$WORK/ardour.log" || { tail -20 "$WORK/ardour.log"; exit 1; }
