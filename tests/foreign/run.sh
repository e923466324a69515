#!/usr/bin/env bash
# run.sh PLUGINS [HOST...]: runs the plug-ins that lie in a folder in other people's hosts: jalv, qtractor, ardour, and with
# our interface under a hand: jalv_windows, qtractor_windows, ardour_windows, whose pictures go to $PICTURES.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
plugins=$(cd "$1" && pwd)
shift
[ $# -gt 0 ] || set -- jalv qtractor ardour jalv_windows qtractor_windows ardour_windows

work=$(mktemp -d)
export HOME=$work/home XDG_RUNTIME_DIR=$work/run
mkdir -p "$HOME" && mkdir -m 700 "$XDG_RUNTIME_DIR"
unset XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME XDG_DOCUMENTS_DIR
mkdir "$work/lv2" && ln -s "$plugins"/*.lv2 "$work/lv2"
export LV2_PATH=$work/lv2:/usr/lib/lv2 CLAP_PATH=$plugins
export JACK_DEFAULT_SERVER=vanta-hosts-$$ JACK_NO_START_SERVER=1
export VANTA_PLUGINS=$plugins WORK=$work PICTURES=${PICTURES:-$work}

jackd --no-realtime -t 20000 -n "$JACK_DEFAULT_SERVER" -d dummy -r 48000 -p 256 > "$work/jackd.log" 2>&1 &
jack=$!
trap 'kill $jack 2> /dev/null; wait $jack 2> /dev/null; rm -rf "$work"' EXIT
for _ in $(seq 50); do
    jack_lsp > /dev/null 2>&1 && break
    sleep 0.1
done
jack_lsp > /dev/null || { echo "the JACK server does not start:"; cat "$work/jackd.log"; exit 1; }

failed=0
for host in "$@"; do
    echo "== $host"
    # They run in real time, and may starve on a busy machine: one more try.
    "$here/$host.sh" || { echo "once more"; "$here/$host.sh"; } || { echo "FAILED: $host"; failed=1; }
done
exit $failed
