#!/bin/bash
# headers.sh alone|together <compiler> <prefix>: compiles every installed header, included twice: each alone, or all of
# them together, which is quicker and enough to ask a second compiler for what it warns of.
set -euo pipefail
mode=$1 compiler=$2 root=$3/include/zelnor

# accept <header>...: compiles a source that includes the headers, and includes them again.
accept() {
    printf '#include "%s"\n' "$@" "$@" |
        "$compiler" -std=c++17 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only -I . -x c++ - ||
        { echo "does not compile: $*"; exit 255; }
}
export -f accept
export compiler

cd "$root"
one_by_one=()
[[ $mode == together ]] || one_by_one=(-n 1 -P "$(nproc)")
# shellcheck disable=SC2016  # expanded by the inner shell
find . -name '*.h' -printf '%P\n' | sort | xargs "${one_by_one[@]}" bash -c 'accept "$@"' accept
