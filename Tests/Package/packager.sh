#!/bin/bash
# packager.sh <source tree> <scratch folder>: a packager's build, who chooses little and expects the rest to be as usual.
set -euo pipefail
source=$1 scratch=$2

fail() {
    echo "$1"
    exit 1
}

rm -rf "$scratch"
said=$(cmake -G Ninja -S "$source" -B "$scratch" -DZELNOR_BUILD_MEDIA=OFF -DBUILD_TESTING=OFF \
    -DCMAKE_INSTALL_RPATH=/opt/libraries -DZELNOR_LOG=OFF)
[[ $said == *"No build type was chosen: this is a release"* ]] || fail "$said"
grep --quiet '^CMAKE_BUILD_TYPE:STRING=Release$' "$scratch/CMakeCache.txt" || fail "no release"
commands=$(ninja -C "$scratch" -t commands)
[[ $commands == *-O3* ]] || fail "not optimised"
[[ $commands != *-Werror* ]] || fail "a warning of a compiler that is new to us would break the build"
[[ $commands != *glog* ]] || fail "built with glog"
[[ $commands != *"$source/Tests/"* ]] || fail "tests are built"
grep --quiet 'NEW_RPATH "/opt/libraries"' "$scratch/cmake_install.cmake" || fail "the search path is another"

# What was chosen stays.
cmake -S "$source" -B "$scratch" -DCMAKE_BUILD_TYPE=None >/dev/null
grep --quiet '^CMAKE_BUILD_TYPE:[A-Z]*=None$' "$scratch/CMakeCache.txt" || fail "the build type was replaced"

# A build of several types looks for libraries nowhere else than one of a single type.
cmake -G "Ninja Multi-Config" -S "$source" -B "$scratch/several" -DZELNOR_BUILD_MEDIA=OFF -DBUILD_TESTING=OFF >/dev/null
paths=$(grep -oh -e '-rpath,[^ ]*' "$scratch/several/CMakeFiles/impl-Release.ninja" | sort -u)
[[ $paths == '-rpath,"\$$ORIGIN"' ]] || fail "a search path is $paths"
