#!/usr/bin/env bash
# Formats the sources. With --check it changes nothing and names what differs.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

need_packages clang-format-14
case ${1-} in
    --check)
        sources | xargs clang-format-14 --dry-run -Werror ||
            die "the format differs; run scripts/format.sh"
        ;;
    '') sources | xargs clang-format-14 -i ;;
    *) die "unknown argument $1 (known: --check)" ;;
esac
