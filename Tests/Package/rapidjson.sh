#!/bin/bash
# rapidjson.sh <source tree> <include folder of RapidJSON> <compiler> <scratch folder>: the header that Clang 19 refuses is mended
# for it, still compiles, and is left alone for compilers that take it.
set -euo pipefail
source=$1 include=$2 compiler=$3 scratch=$4

rm -rf "$scratch"
mkdir -p "$scratch"
cat >"$scratch/mend.cmake" <<'END'
cmake_minimum_required(VERSION 3.25)
include("${SOURCE}/cmake/ZelnorRapidJson.cmake")
zelnor_rapidjson_mended("${INCLUDE}" "${SCRATCH}/mended" result)
message(STATUS "result [${result}]")
END
# mend <compiler> <version>
mend() {
    cmake "-DSOURCE=$source" "-DINCLUDE=$include" "-DSCRATCH=$scratch" "-DCMAKE_CXX_COMPILER_ID=$1" \
        "-DCMAKE_CXX_COMPILER_VERSION=$2" -P "$scratch/mend.cmake"
}

[[ $(mend GNU 12.2.0) == *"result []"* && $(mend Clang 18.1.8) == *"result []"* ]]
# Later versions of RapidJSON are right.
if ! grep --quiet -F '{ s = rhs.s; length = rhs.length; }' "$include/rapidjson/document.h"; then
    [[ $(mend Clang 19.1.7) == *"result []"* ]]
    exit
fi
[[ $(mend Clang 19.1.7) == *"result [$scratch/mended]"* ]]
if grep -F 'length = rhs.length' "$scratch/mended/rapidjson/document.h"; then
    echo "not mended"
    exit 1
fi
printf '#include <rapidjson/%s>\n' document.h writer.h stringbuffer.h prettywriter.h |
    "$compiler" -std=c++17 -fsyntax-only -isystem "$scratch/mended" -idirafter "$include" -x c++ -
