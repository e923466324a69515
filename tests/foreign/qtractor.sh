#!/usr/bin/env bash
# qtractor's scanner lists the CLAP plug-in without a complaint, and qtractor opens a session with CLAP and LV2 in it.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
scanner=$(dpkg -L qtractor | grep '/qtractor_plugin_scan$')
clap=$VANTA_PLUGINS/vanta.clap
listed=$(echo "CLAP:$clap" | QT_QPA_PLATFORM=offscreen timeout 30 "$scanner" 2> "$WORK/scan.err")
echo "scanned: $listed"
case $listed in
    "CLAP|Vanta 2|2:2|1:0|31:0|"*) ;;
    *) echo "expected Vanta 2 with 2 inputs, 2 outputs, MIDI and 31 parameters"; exit 1 ;;
esac
if grep -q . "$WORK/scan.err"; then cat "$WORK/scan.err"; exit 1; fi

cat > "$WORK/session.qtr" <<SESSION
<!DOCTYPE qtractor-session>
<session name="session" version="0.9.31">
 <properties><directory>$WORK</directory><sample-rate>48000</sample-rate><tempo>120</tempo></properties>
 <devices><audio-engine><audio-bus name="Master" mode="duplex"><channels>2</channels>
  <output-plugins>
   <plugin type="CLAP"><filename>$clap</filename><index>0</index><label>Vanta 2</label><activated>1</activated></plugin>
   <plugin type="LV2"><filename>urn:quillmark:vanta2:stereo</filename><index>0</index><activated>1</activated></plugin>
  </output-plugins>
 </audio-bus></audio-engine></devices>
</session>
SESSION
gcc -shared -fPIC -o "$WORK/no_sequencer.so" "$here/no_sequencer.c"
LD_PRELOAD=$WORK/no_sequencer.so timeout 40 xvfb-run -a -s "-screen 0 1280x800x24" \
    sh -c 'echo $$ > "$0"; exec qtractor "$1"' "$WORK/pid" "$WORK/session.qtr" > "$WORK/qtractor.log" 2>&1 &
for _ in $(seq 100); do
    sleep 0.2
    process=$(cat "$WORK/pid" 2> /dev/null || true)
    [ -n "$process" ] || continue
    maps=$(cat "/proc/$process/maps" 2> /dev/null || true)
    jack_lsp | grep -q '^Qtractor:Master/out_2' || continue
    case $maps in *vanta.clap*vanta.lv2/vanta.so* | *vanta.lv2/vanta.so*vanta.clap*) loaded=1; break ;; esac
done
sleep 1
alive=
[ -n "$process" ] && kill "$process" 2> /dev/null && alive=1
wait || true
if [ "${loaded:-0}" != 1 ] || [ -z "$alive" ]; then
    cat "$WORK/qtractor.log"
    echo "qtractor has not loaded both plug-ins"
    exit 1
fi
echo "ok: a session with CLAP and LV2 is open and runs"
