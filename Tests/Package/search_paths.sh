#!/bin/bash
# search_paths.sh <folder>...: where the dynamic linker looks for what the binaries in these folders need. An empty entry, and
# each that is not absolute, means something else in every working folder.
set -euo pipefail
status=0
count=0

while IFS= read -r file; do
    path=$(readelf -d "$file" | sed -nE 's/.*\((RUNPATH|RPATH)\).*\[(.*)\]$/\2:/p')
    count=$((count + 1))
    while [[ -n $path ]]; do
        entry=${path%%:*}
        path=${path#*:}
        if [[ $entry != /* && $entry != "\$ORIGIN" && $entry != "\$ORIGIN/"* ]]; then
            echo "$file searches '$entry'"
            status=1
        fi
    done
done < <(find "$@" -type f -exec sh -c '[ "$(head -c 4 "$1")" = "$(printf "\177ELF")" ]' sh {} \; -print)
if [[ $count == 0 ]]; then
    echo "there is no binary in $*"
    exit 1
fi
exit "$status"
