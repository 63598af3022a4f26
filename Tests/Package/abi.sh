#!/bin/bash
# abi.sh <source tree> <folder of libraries with debug information> [record]: compares what programs are built against, down
# to the layout of classes, with what was recorded before. What is added is fine. When a change is meant, record it.
set -euo pipefail
source=$1 libraries=$2 mode=${3:-compare}
recorded=$source/Tests/Package/abi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

for library in ZelnorCore ZelnorConf; do
    if [[ $mode == record ]]; then
        mkdir -p "$recorded"
        abidw --no-corpus-path --no-comp-dir-path --no-show-locs "$libraries/lib$library.so" |
            sed "s|$source/||g" | xz -9e >"$recorded/$library.abi.xz"
        continue
    fi
    xz -dc "$recorded/$library.abi.xz" >"$scratch/$library.abi"
    if ! abidiff --no-added-syms "$scratch/$library.abi" "$libraries/lib$library.so" >"$scratch/said" 2>&1; then
        cat "$scratch/said"
        echo "lib$library.so is not what programs were built against"
        exit 1
    fi
    echo "campaign: lib$library.so is compatible with what was recorded"
done
