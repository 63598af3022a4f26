#!/bin/bash
# sources.sh <source tree> <build tree>: every source is listed in a CMakeLists.txt, so that no test is left out unseen.
set -euo pipefail
source=$1 build=$2

# What somebody else's project builds is not for our build, peers are measured only where they are installed, and the
# Python package is built where it is asked for.
elsewhere=(-name .git -o -name build -o -path ./Tests/Package/consumer -o -path ./Benchmarks/Peers)
if ! grep -q '^ZELNOR_BUILD_PYTHON:BOOL=ON' "$build/CMakeCache.txt"; then
    elsewhere+=(-o -path ./Bindings -o -path ./Tests/Python)
fi
present() {
    cd "$source"
    find . \( "${elsewhere[@]}" \) -prune -o -name '*.cpp' -printf '%P\n' | LC_ALL=C sort
}
# Alone, or together with others.
built() {
    {
        sed -nE "s|^ *\"file\": \"$source/(.*)\",?$|\1|p" "$build/compile_commands.json"
        find "$build" -path '*/Unity/*' -name 'unity_*.cxx' -exec sed -nE "s|^#include \"$source/(.*)\"$|\1|p" {} +
    } | LC_ALL=C sort -u
}
if LC_ALL=C comm -23 <(present) <(built) | grep .; then
    echo "listed in no CMakeLists.txt"
    exit 1
fi
