#!/usr/bin/env bash
# Runs clang-tidy with the checks of .clang-tidy over the C++ sources, or over
# those whose path holds the pattern given. The commands are those of the clang
# preset: the precompiled headers of g++ are none for clang-tidy.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

need_packages cmake ninja-build g++ libgtest-dev clang-14 clang-tidy-14
configure_preset clang ON
run_tidy=$(command -v run-clang-tidy-14 || command -v run-clang-tidy) ||
    die "run-clang-tidy is missing (package clang-tools-14)"
# Of what it prints only findings matter, not the commands and the counts of what is left out.
"$run_tidy" -quiet -clang-tidy-binary "$(command -v clang-tidy-14)" -p build/clang \
    -j "$(nproc)" "$PWD/.*${1-}.*\.cpp" 2>&1 |
    grep -vE '^[0-9]+ warnings? generated|clang-tidy[^ ]* .*-p=build/clang' || [ "${PIPESTATUS[0]}" -eq 0 ] ||
    die "there are findings"
