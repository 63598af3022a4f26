#!/bin/bash
# generation.sh <source tree> <prefix> <scratch folder>: FFmpeg gives codecs other numbers from one major version to
# another. What was made with the headers of one is not used with those of another, neither when a project is configured,
# nor when it is compiled, nor when it starts.
set -euo pipefail
source=$1 prefix=$2 scratch=$3
package=$(find "$prefix" -name ZelnorConfig.cmake)
libraries=$(dirname "$(find "$prefix" -name libZelnorConf.so)")
major=$(sed -nE 's/^set\(Zelnor_AVCODEC_MAJOR "([0-9]+)"\)$/\1/p' "$package")
codecs=$prefix/include/zelnor/Conf/Interfaces/Vocabulary/FFmpegCodecs.h

rm -rf "$scratch"
mkdir -p "$scratch/project"

# expect <text> <what it is of> <answer>
expect() {
    if [[ $3 != *"$1"* ]]; then
        printf '%s says\n%s\nand not\n%s\n' "$2" "$3" "$1"
        exit 1
    fi
}

# headers <folder> <major>: headers of another FFmpeg, that number codecs as the tests' own do.
headers() {
    mkdir -p "$1/libavcodec"
    printf '#define LIBAVCODEC_VERSION_MAJOR %s\n' "$2" >"$1/libavcodec/version_major.h"
    {
        echo '#include "version_major.h"'
        cat "$source/Tests/Conf/Fixtures/ffmpeg/libavcodec/avcodec.h"
    } >"$1/libavcodec/codec_id.h"
    echo '#include "codec_id.h"' >"$1/libavcodec/avcodec.h"
}
headers "$scratch/next" $((major + 1))
headers "$scratch/same" "$major"

# Configured

cat >"$scratch/project/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(Asks LANGUAGES CXX)
find_package(Zelnor 1.0 CONFIG REQUIRED)
message(STATUS "headers: ${Zelnor_AVCODEC_INCLUDE_DIR}")
END
configure() {
    cmake -S "$scratch/project" -B "$scratch/build" --fresh "$@" 2>&1 | tr -s ' \n' '  ' || true
}
recorded=$(sed -nE 's/^find_path\(Zelnor_AVCODEC_INCLUDE_DIR .* PATHS "(.*)" NO_DEFAULT_PATH\)$/\1/p' "$package")
expect "headers: $recorded" "a project that has another FFmpeg, too," \
    "$(configure "-DCMAKE_PREFIX_PATH=$prefix;$scratch/next" "-DCMAKE_INCLUDE_PATH=$scratch/next")"
expect "This build of Zelnor needs the headers of FFmpeg's libavcodec $major, and those in $scratch/next are of libavcodec $((major + 1))." \
    "a project that names another FFmpeg" \
    "$(configure "-DCMAKE_PREFIX_PATH=$prefix" "-DZelnor_AVCODEC_INCLUDE_DIR=$scratch/next")"

# Compiled

# compile <source> <option>...
compile() {
    printf '%b' "$1" | c++ -std=c++17 -fsyntax-only -I "$prefix/include/zelnor" "${@:2}" -x c++ - 2>&1 || true
}
ours='#include "Conf/Interfaces/CodecMaps.h"\n'
[[ -z $(compile "$ours" -isystem "$recorded") ]]
sentence="This build of Zelnor needs the headers of libavcodec $major, and these are another major version's"
expect "$sentence" "with another FFmpeg, the compiler" "$(compile "$ours" -I "$scratch/next")"
# The one that was included first is what counts, and its identifiers are not declared twice.
said=$(compile "#include <cstdint>\nextern \"C\" {\n#include \"$scratch/next/libavcodec/avcodec.h\"\n}\n$ours" -isystem "$recorded")
expect "$sentence" "after another FFmpeg's header, the compiler" "$(head -n 20 <<<"$said")"
expect 'This build of Zelnor was made with FFmpeg headers that give codecs other numbers' \
    "with other numbers of the same major version, the compiler" "$(compile "$ours" -I "$scratch/same")"

# Started: a program that was made with other numbers does not find them in the library.

printf '%bint main() { return Zelnor::Conf::CodecIDFromTextID("CODEC_ID_NONE"); }\n' "$ours" |
    c++ -std=c++17 -I "$prefix/include/zelnor" -isystem "$recorded" -x c++ - -x none -o "$scratch/right" \
        "-Wl,-rpath,$libraries" -L "$libraries" -lZelnorConf -lZelnorCore
"$scratch/right"
numbers=$(sed -nE 's/^#define ZELNOR_CODEC_NUMBERS codecNumbers_//p' "$codecs")
sed "s/codecNumbers_$numbers/codecNumbers_0123456789ab/" "$scratch/right" >"$scratch/wrong"
chmod +x "$scratch/wrong"
if said=$("$scratch/wrong" 2>&1); then
    echo "a program with other numbers runs"
    exit 1
fi
expect 'undefined symbol: _ZN6Zelnor4Conf7details25codecNumbers_0123456789abE' "a program with other numbers" "$said"
