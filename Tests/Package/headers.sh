#!/bin/bash
# headers.sh alone <compiler> <prefix> <source tree> | together <compiler> <prefix>: compiles installed headers, included
# twice: each alone, or all of them together, which is quicker and enough to ask a second compiler for what it warns of.
# What a source of ours includes before anything else has been compiled alone by our own build.
set -euo pipefail
mode=$1 compiler=$2 root=$3/include/zelnor source=${4-}

# accept <header>...: compiles a source that includes the headers, and includes them again.
accept() {
    printf '#include "%s"\n' "$@" "$@" |
        "$compiler" -std=c++17 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only -I . -x c++ - ||
        { echo "does not compile: $*"; exit 255; }
}
export -f accept
export compiler

# is_first <header>: whether the source of the same name includes the header first.
is_first() {
    local of=$source/${1%.h}.cpp
    [[ -f $of && $(grep --max-count=1 '^#include' "$of") == "#include \"$1\"" ]]
}

cd "$root"
mapfile -t headers < <(find . -name '*.h' -printf '%P\n' | sort)
if [[ $mode == together ]]; then
    accept "${headers[@]}"
    # Clang 19 and later do not compile the documents of RapidJSON 1.1.
    if printf '#include "%s"\n' "${headers[@]}" | "$compiler" -std=c++17 -M -I . -x c++ - | grep -o '[^ ]*rapidjson/document\.h'; then
        echo "included by our headers"
        exit 1
    fi
    exit
fi
alone=()
for header in "${headers[@]}"; do
    is_first "$header" || alone+=("$header")
done
# shellcheck disable=SC2016  # expanded by the inner shell
printf '%s\n' "${alone[@]}" | xargs -n 1 -P "$(nproc)" bash -c 'accept "$@"' accept
