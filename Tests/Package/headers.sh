#!/bin/bash
# headers.sh <compiler> <prefix>: compiles every installed header alone, and included twice.
set -euo pipefail
compiler=$1 root=$2/include/zelnor

cd "$root"
# shellcheck disable=SC2016  # expanded by the inner shell
find . -name '*.h' -printf '%P\n' | sort | xargs -P "$(nproc)" -I {} bash -c '
    printf "#include \"%s\"\n#include \"%s\"\n" "{}" "{}" |
        "$0" -std=c++17 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only -I . -x c++ - ||
        { echo "{} does not compile alone"; exit 255; }' "$compiler"
