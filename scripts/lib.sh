# shellcheck shell=bash
# What the scripts share; sourced by them, never run. Messages go to standard
# error, so that standard output stays what the started program prints.

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1

say() { printf '%s\n' "$*" >&2; }

die() {
    say "${0##*/}: $*"
    exit 1
}

# Answers whether what a Debian package brings is there. Tools are looked for by
# name, since they may come from elsewhere; only headers need the package.
have_package() {
    case $1 in
        ninja-build) command -v ninja >/dev/null ;;
        libgtest-dev) [ -e /usr/include/gtest/gtest.h ] || [ -e /usr/local/include/gtest/gtest.h ] ;;
        libclang-rt-14-dev) compgen -G '/usr/lib/llvm-14/lib/clang/*/lib/linux/libclang_rt.asan-x86_64.a' >/dev/null ;;
        *) command -v "$1" >/dev/null ;;
    esac
}

# need_packages PACKAGE...: installs those that are missing, with apt-get, and
# says so before it does. Rights are asked for only when something is missing.
need_packages() {
    local package missing=() as_root=()
    for package in "$@"; do
        have_package "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    command -v apt-get >/dev/null ||
        die "missing: ${missing[*]}; this is no Debian system, install what these packages bring by hand"
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            die "missing: ${missing[*]}; as root: apt-get update && apt-get install --no-install-recommends ${missing[*]}"
        as_root=(sudo)
    fi
    say "Installing the Debian packages ${missing[*]} ..."
    local log
    log=$(mktemp)
    if ! { "${as_root[@]}" apt-get update &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        die "apt-get could not install ${missing[*]}"
    fi
    rm -f "$log"
    for package in "${missing[@]}"; do
        have_package "$package" || die "apt-get has installed $package, but it does not work here"
    done
}

need_platform() {
    [ "$(uname -s)-$(uname -m)" = Linux-x86_64 ] ||
        die "pscv measures on x86-64 Linux, and this is $(uname -s) on $(uname -m)"
}

# Copies its input, and on a terminal shows how many steps of the build are done.
show_progress() {
    local line
    while IFS= read -r line; do
        printf '%s\n' "$line"
        if [[ -t 2 && $line =~ ^\[([0-9]+)/([0-9]+)\]\  ]]; then
            printf '\r  %d of %d steps' "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}" >&2
        fi
    done
    if [ -t 2 ]; then printf '\r\033[K' >&2; fi
}

# configure_preset PRESET TESTS: TESTS is ON or OFF. The output begins the log of the preset.
configure_preset() {
    local log=build/$1.log
    mkdir -p build
    if ! cmake --preset "$1" -DPSCV_TESTS="$2" >"$log" 2>&1; then
        tail -n 40 "$log" >&2
        die "cmake cannot configure the $1 preset"
    fi
}

# build_preset PRESET TESTS [TARGET...]: configures and builds. The output goes to a
# log, but a failure shows what the compiler said.
build_preset() {
    local preset=$1 tests=$2 log=build/$1.log target=()
    shift 2
    [ $# -eq 0 ] || target=(--target "$@")
    say "Building the $preset preset (course: $log) ..."
    configure_preset "$preset" "$tests"
    # Only this makes ccache store what is compiled with a precompiled header.
    export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS-pch_defines,time_macros}
    if ! NINJA_STATUS='[%f/%t] ' cmake --build --preset "$preset" -j"$(nproc)" "${target[@]}" 2>&1 |
        show_progress >>"$log"; then
        grep -vE '^\[[0-9]+/[0-9]+\] ' "$log" | tail -n 60 >&2
        die "the $preset preset does not build"
    fi
}

# The C and C++ sources of the tree, one a line.
sources() { find bench perf perflib tests zmo -name '*.[ch]' -o -name '*.cpp' | sort; }
