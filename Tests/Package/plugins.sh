#!/bin/bash
# plugins.sh <compiler> <another compiler> <source tree> <prefix> <scratch folder> [<times>]: a program that one compiler made
# loads a plug-in of the other one, optimised and not, and exceptions and objects cross between them until it is unloaded.
set -euo pipefail
compilers=("$1" "$2") source=$3 prefix=$4 scratch=$5 times=${6:-20}

rm -rf "$scratch"
mkdir -p "$scratch"
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name zelnor-conf.pc)")
export PKG_CONFIG_PATH
read -ra flags <<<"$(pkg-config --cflags --libs zelnor-conf) -Wl,-rpath,$(pkg-config --variable=libdir zelnor-conf)"

# make <result> <compiler> <option>...
make() {
    "$2" -std=c++17 "${@:3}" "${flags[@]}" -ldl -o "$scratch/$1"
}
running=()
for number in 0 1; do
    make "host$number" "${compilers[number]}" "$source/Tests/Package/consumer/host.cpp" &
    running+=("$!")
    for level in 0 2; do
        make "plugin$number-O$level.so" "${compilers[number]}" "$source/Tests/Package/consumer/plugin.cpp" "-O$level" -shared -fPIC &
        running+=("$!")
    done
done
# What uses the media library brings FFmpeg's libraries along, which stay when they want to: what is unique tells.
road=$scratch/road.so
make road.so "${compilers[0]}" "$source/Examples/transcode_file.cpp" -O0 -shared -fPIC &
running+=("$!")
for process in "${running[@]}"; do
    wait "$process"
done
if nm -C "$road" | grep ' u '; then
    echo "unique in a plug-in that runs jobs"
    exit 1
fi
for number in 0 1; do
    for level in 0 2; do
        "$scratch/host$number" "$scratch/plugin$((1 - number))-O$level.so" "$times" ||
            { echo "${compilers[number]} with ${compilers[1 - number]} -O$level"; exit 1; }
    done
done
