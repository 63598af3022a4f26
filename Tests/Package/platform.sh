#!/bin/bash
# platform.sh <source tree>: what the guard says of systems and compilers.
set -euo pipefail
source=$1

# says <text, or nothing> <system> <compiler> <version>
says() {
    local text
    text=$(cmake "-DCMAKE_SYSTEM_NAME=$2" "-DCMAKE_CXX_COMPILER_ID=$3" "-DCMAKE_CXX_COMPILER_VERSION=$4" \
        -P "$source/cmake/ZelnorPlatform.cmake" 2>&1 | tr -s ' \n' '  ') || true
    if [[ $text != *"$1"* || (-z $1 && -n $text) ]]; then
        printf '%s %s %s: %s\nand not: %s\n' "$2" "$3" "$4" "$text" "$1"
        exit 1
    fi
}

says '' Linux GNU 12.2.0
says '' Linux Clang 14.0.6
says '' Linux Clang 19.1
says 'GCC 12, Clang 14 and later ones. GNU 11.4.0 may not compile it' Linux GNU 11.4.0
says 'GCC 12, Clang 14 and later ones. Clang 13.0.1 may not compile it' Linux Clang 13.0.1
says 'GCC 12, Clang 14 and later ones. IntelLLVM 2025.0 may not compile it' Linux IntelLLVM 2025.0
says 'Zelnor supports Linux only, and this is a build for Darwin.' Darwin Clang 15.0
