#!/bin/sh
# Runs each fuzz program for a while: run.sh FOLDER_OF_THE_PROGRAMS [SECONDS]. What it finds stays in the
# corpus folder beside the program.
set -eu
folder=$1
seconds=${2:-60}
for target in preset preset_map controller_map settings archive; do
    corpus=$folder/corpus/$target
    mkdir -p "$corpus"
    VANTA_FUZZ_SAMPLES=$corpus "$folder/fuzz_$target" -max_total_time="$seconds" -max_len=4096 -timeout=10 \
        -print_final_stats=1 -verbosity=0 -artifact_prefix="$corpus/../$target-" "$corpus"
done
