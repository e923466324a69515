#!/bin/sh
# Runs the comparison with the versions of the peers at its head, and without the settings of whoever runs it: an
# instance would take its first values from them. Options go to build/vanta_compare.
set -eu
cd "$(dirname "$0")/../.."
versions=$(dpkg-query -W -f='${Package} ${Version}, ' x42-plugins lsp-plugins-lv2 libzita-resampler1 libsoxr0 \
    libfftw3-single3 libebur128-1 libhwy1)
XDG_CONFIG_HOME=$(pwd)/build/no-settings exec build/vanta_compare --note "Packages: ${versions%, }." --json build/compare.json "$@"
