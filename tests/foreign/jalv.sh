#!/usr/bin/env bash
# Each LV2 plug-in in jalv: it gets its ports, takes a value, tells its latency and loads a preset.
set -euo pipefail
for layout in mono stereo 5.0 5.1 7.1 7.1.2; do
    uri=urn:quillmark:vanta2:$layout
    log=$WORK/jalv.$layout
    {
        sleep 1
        echo "set 0 7"
        sleep 0.5
        echo monitors
        jack_lsp | grep -c '^limiter:out_' >&2
        echo presets # reads them
        sleep 0.5
        echo "preset urn:quillmark:vanta2:preset:loud:club-and-dance"
        sleep 0.5
        echo controls
        echo quit
    } 2> "$log.outs" | timeout 30 jalv -n limiter -x "$uri" > "$log" 2>&1
    for expected in 'gain = 7' 'latency = 3099' 'gain = 9'; do
        grep -q "$expected" "$log" || { cat "$log"; echo "expected $expected"; exit 1; }
    done
    echo "ok: $layout, $(cat "$log.outs") outputs, $(grep -o 'latency = [0-9]*' "$log" | head -1)"
done
