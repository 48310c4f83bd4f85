#!/usr/bin/env bash
# Everything that must hold: the format of the sources, and all tests, in the release
# build of g++ and under the address and undefined-behaviour sanitizers of clang.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

# run_tests PRESET: one line a test that passed would hide the others; what
# failed or was skipped is shown, and the closing lines.
run_tests() {
    local log=build/$1-tests.log status=0
    say "Testing the $1 preset (course: $log) ..."
    ctest --preset "$1" -j"$(nproc)" --no-tests=error >"$log" 2>&1 || status=$?
    grep -vE '^ *[0-9]+/[0-9]+ Test +#[0-9]+: .* Passed|^ +Start +[0-9]+: ' "$log" || true
    [ "$status" -eq 0 ] || die "the tests of the $1 preset do not pass"
}

need_platform
need_packages cmake ninja-build g++ libgtest-dev clang-format-14 clang-14 libclang-rt-14-dev
scripts/format.sh --check
for preset in release asan; do
    build_preset "$preset" ON
    run_tests "$preset"
done
