#!/bin/bash
# abi.sh <source tree> <folder of libraries with debug information> [record]: compares what programs are built against, down
# to the layout of classes in public headers, with what was recorded before. What is added is fine. When a change is meant,
# record it.
set -euo pipefail
source=$1 libraries=$2 mode=${3:-compare}
recorded=$source/Tests/Package/abi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# compare <dump> <library>: what the dump does not have is private. abidiff calls a dump that it cannot read compatible, so
# nothing may be said at all.
compare() {
    abidiff --no-added-syms "$1" "$2" >"$scratch/said" 2>&1 && [[ ! -s $scratch/said ]]
}

for name in ZelnorCore ZelnorConf; do
    library=$(find "$libraries" -name "lib$name.so")
    dump=$scratch/$name.abi
    if [[ $mode == record ]]; then
        mkdir -p "$recorded"
        abidw --no-corpus-path --no-comp-dir-path --no-show-locs --drop-private-types --headers-dir "$source/Core/Interfaces" \
            --headers-dir "$source/Conf/Interfaces" "$library" >"$dump"
        # Sources that were compiled together are named by the folder they were built in.
        sed -Ei "s|^(  <abi-instr .* path=')[^']*/|\1|" "$dump"
        xz -9e --stdout "$dump" >"$recorded/$name.abi.xz"
        continue
    fi
    xz -dc "$recorded/$name.abi.xz" >"$dump"
    if ! compare "$dump" "$library"; then
        cat "$scratch/said"
        echo "lib$name.so is not what programs were built against"
        exit 1
    fi
    echo "campaign: lib$name.so is compatible with what was recorded"
    if [[ $name == ZelnorCore ]]; then
        # A class of another size is noticed.
        sed -Ei "s/(<class-decl name='Property' size-in-bits=')/\11/" "$dump"
        if compare "$dump" "$library" || ! grep -q 'type size changed' "$scratch/said"; then
            echo "the comparison finds nothing"
            exit 1
        fi
    fi
done
