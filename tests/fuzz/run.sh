#!/bin/sh
# Runs each fuzz program for a while: run.sh FOLDER_OF_THE_PROGRAMS [SECONDS]. What it finds stays in the
# corpus folder beside the program.
set -eu
folder=$1
seconds=${2:-60}
# Each step of some targets saves a file, which on a disk would wait until it has arrived there.
if [ -w /dev/shm ]; then TMPDIR=/dev/shm; fi
# A program that finds something does not clean up behind itself.
TMPDIR=$(mktemp -d "${TMPDIR:-/tmp}/vanta-fuzz.XXXXXX")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
for target in preset preset_map controller_map session settings archive png style style_source; do
    echo "== $target"
    corpus=$folder/corpus/$target
    mkdir -p "$corpus"
    # No input of 4 KB is worth an allocation of 16 MB.
    VANTA_FUZZ_SAMPLES=$corpus "$folder/fuzz_$target" -max_total_time="$seconds" -max_len=4096 -timeout=10 \
        -malloc_limit_mb=16 -print_final_stats=1 -verbosity=0 -artifact_prefix="$corpus/../$target-" "$corpus"
done
