#!/usr/bin/env bash
# Builds pscv and runs it with the keys given. Without keys it measures Canny.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

need_platform
need_packages cmake ninja-build g++
tests=OFF
if have_package libgtest-dev; then tests=ON; fi
[ -e build/release/pscv ] ||
    say "The first build takes about $((300 / $(nproc) + 30)) seconds on this machine's $(nproc) cores."
build_preset release "$tests" pscv

if [ $# -gt 0 ]; then
    exec build/release/pscv "$@"
fi

build/release/pscv -B -fCanny -LP -r
say ""
say "The table of this run: $PWD/build/release/pscv.csv"
say "To measure everything:  scripts/run.sh -B -LP -r      All keys: scripts/run.sh -h"
