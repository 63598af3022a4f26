#!/bin/bash
# names.sh <source tree> <document>...: what the documents name is there. Links lead to files, a name between
# back quotes that looks like a path is one, and one that looks like a class or a function occurs in the sources.
set -euo pipefail
cd "$1"
shift
wrong=0
complain() {
    echo "$1"
    wrong=1
}

# A name as the sources write it: two humps at least, or a scope.
identifiers() {
    grep -oE '`[A-Za-z_:]+(\(\))?`' "$1" | tr -d '`()' | grep -E '[a-z][A-Z]|::' | sort -u || true
}

for document in "$@"; do
    folder=$(dirname "$document")
    # What stands in a block of code is somebody's example, not a name.
    prose=$(sed '/^ *```/,/^ *```/d' "$document")
    while IFS= read -r link; do
        [[ -e $folder/${link%%#*} ]] || complain "$document: the link to '$link' leads nowhere"
    done < <(grep -oE '\]\([^)]+\)' <<<"$prose" | sed -E 's/^\]\(//; s/\)$//' | grep -vE '^(https?:|#)' || true)
    while IFS= read -r path; do
        [[ -e $path ]] || complain "$document: there is no '$path'"
    done < <(grep -oE '`[A-Za-z]+/[A-Za-z0-9_./-]*`' <<<"$prose" | tr -d '`' | sort -u || true)
    while IFS= read -r name; do
        grep -rqwF --include='*.h' --include='*.cpp' --include='*.def' --include='*.txt' --include='*.cmake' \
            -- "${name##*::}" Core Conf Media Tools CMakeLists.txt cmake Examples ||
            complain "$document: '$name' does not occur in the sources"
    done < <(identifiers <(printf '%s\n' "$prose"))
done
exit "$wrong"
