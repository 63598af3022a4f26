#!/bin/bash
# plugins.sh <compiler> <another compiler> <source tree> <prefix> <scratch folder>: a program that one compiler made loads a
# plug-in of the other one, and exceptions and objects cross between them.
set -euo pipefail
compilers=("$1" "$2") source=$3 prefix=$4 scratch=$5

rm -rf "$scratch"
mkdir -p "$scratch"
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name zelnor-conf.pc)")
export PKG_CONFIG_PATH
read -ra flags <<<"$(pkg-config --cflags --libs zelnor-conf) -Wl,-rpath,$(pkg-config --variable=libdir zelnor-conf)"

# Less optimised, GCC takes an object of its standard library for unique, which keeps a plug-in in memory.
# make <result> <compiler> <option>...
make() {
    "$2" -std=c++17 "${@:3}" "${flags[@]}" -ldl -o "$scratch/$1"
}
running=()
for number in 0 1; do
    make "host$number" "${compilers[number]}" "$source/Tests/Package/consumer/host.cpp" &
    running+=("$!")
    make "plugin$number.so" "${compilers[number]}" "$source/Tests/Package/consumer/plugin.cpp" -O2 -shared -fPIC &
    running+=("$!")
done
for process in "${running[@]}"; do
    wait "$process"
done
for number in 0 1; do
    "$scratch/host$number" "$scratch/plugin$((1 - number)).so" ||
        { echo "${compilers[number]} with ${compilers[1 - number]}"; exit 1; }
done
