#!/bin/bash
# generations.sh <source tree> <compiler> <scratch folder>: our tables with the headers of FFmpeg's generations, of which the
# tests hold what they say of our codecs.
set -euo pipefail
source=$1 compiler=$2 scratch=$3

rm -rf "$scratch"
mkdir -p "$scratch"
cat >"$scratch/read.cmake" <<'END'
cmake_minimum_required(VERSION 3.25)
set(PROJECT_SOURCE_DIR "${SOURCE}")
set(PROJECT_BINARY_DIR "${SCRATCH}")
include("${SOURCE}/cmake/ZelnorFFmpeg.cmake")
zelnor_ffmpeg_codecs("${HEADERS}" "${SCRATCH}/Conf/Interfaces/Vocabulary/FFmpegCodecs.h")
message(STATUS "major [${ZELNOR_FFMPEG_MAJOR}] numbers [${ZELNOR_FFMPEG_NUMBERS}]")
END
# What takes longest to parse and is the same for all of them.
printf '#include <boost/%s.hpp>\n' property_tree/ptree exception/all exception_ptr >"$scratch/boost.h"
"$compiler" -std=c++17 -x c++-header "$scratch/boost.h" -o "$scratch/boost.h.gch"

# read_headers <folder of headers> <scratch folder>
read_headers() {
    mkdir -p "$2/CMakeFiles"
    cmake "-DCMAKE_CXX_COMPILER=$compiler" "-DSOURCE=$source" "-DHEADERS=$1" "-DSCRATCH=$2" -P "$scratch/read.cmake" 2>&1 |
        tr -s ' \n' '  '
}

# recorded <column> <folder>: a header of a generation, of which the tests hold what it says of our codecs.
recorded() {
    mkdir -p "$2/libavcodec"
    awk -F '\t' -v column="$1" '
        $1 == "libavcodec" {
            split($column, version, ".")
            print "#define LIBAVCODEC_VERSION_MAJOR " version[1]
            print "#define LIBAVCODEC_VERSION_MINOR " version[2]
            print "enum AVCodecID {\n    AV_CODEC_ID_NONE = 0,"
        }
        /^AV_CODEC_ID_/ && $column != "-" { print "    " $1 " = " $column "," }
        END { print "};" }' "$source/Tests/Conf/Data/generations.tsv" | sed '1i #pragma once' >"$2/libavcodec/avcodec.h"
}

# generation <headers> <libavcodec's major> <rows of video> <of audio> <of subtitles> <of others> <codec IDs>
generation() {
    local work=$1/tables said
    said=$(read_headers "$1" "$work")
    if [[ $said != *"major [$2] "* ]]; then
        echo "$1: $said"
        return 1
    fi
    cat >"$work/tables.cpp" <<END
#include "Conf/Interfaces/Stub.cpp"
namespace Zelnor::Conf
{
static_assert(std::size(videoCodecs) == $3);
static_assert(std::size(audioCodecs) == $4);
static_assert(std::size(subtitleCodecs) == $5);
static_assert(std::size(unknownCodecs) == $6);
constexpr AVCodecID ids[] = {
#undef ZELNOR_CODEC_ROW_1
#define ZELNOR_CODEC_ROW_1(key, text) key,
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, )
#define ZELNOR_CODEC_AS(name, enumerator) ZELNOR_CODEC_ROW(ZELNOR_HAS_##enumerator, enumerator, )
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, )
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, )
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
#define ZELNOR_CODEC(name) ZELNOR_CODEC_ROW(ZELNOR_HAS_AV_##name, AV_##name, )
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
    AV_CODEC_ID_NONE};
constexpr std::size_t CountIds()
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < std::size(ids); ++i)
    {
        bool isNew = true;
        for (std::size_t before = 0; before < i; ++before)
        {
            isNew = isNew && ids[before] != ids[i];
        }
        count += isNew;
    }
    return count;
}
static_assert(CountIds() == $7);
} // namespace Zelnor::Conf
END
    "$compiler" -std=c++17 -fsyntax-only -include "$scratch/boost.h" -I "$work" -I "$1" -I "$source" "$work/tables.cpp"
}

running=()
# try <name> <column> <as a generation>...
try() {
    recorded "$2" "$scratch/$1"
    generation "$scratch/$1" "${@:3}" &
    running+=("$!")
}
cp -r "$source/Tests/Conf/Fixtures/ffmpeg" "$scratch/first"
generation "$scratch/first" '' 187 134 21 9 349 &
running+=("$!")
try 1.1 2 54 184 134 17 9 342
try 1.2 3 54 185 134 20 9 346
try 2.0 4 55 186 134 21 9 348
try 3.2 5 57 187 134 21 9 348
try 4.3 6 58 186 132 21 9 345
try 5.1 7 59 186 132 21 9 345
try 7.1 8 61 185 132 21 9 344
try 8.0 9 62 185 132 21 9 344
try 9.0 10 63 182 132 21 9 341
for process in "${running[@]}"; do
    wait "$process"
done

# What has no AVCodecID yet is told what is needed.
mkdir -p "$scratch/old/libavcodec"
cat >"$scratch/old/libavcodec/avcodec.h" <<'END'
#define LIBAVCODEC_VERSION_MAJOR 53
#define LIBAVCODEC_VERSION_MINOR 61
enum CodecID { CODEC_ID_NONE, CODEC_ID_MPEG1VIDEO };
END
said=$(read_headers "$scratch/old" "$scratch/old-work" || true)
expected="Zelnor needs FFmpeg 1.0 or later, that is libavcodec 54.59, whose headers have 'enum AVCodecID'. $scratch/old/libavcodec/avcodec.h does not have it; this is libavcodec 53.61."
if [[ $said != *"$expected"* ]]; then
    printf '%s\nand not\n%s\n' "$said" "$expected"
    exit 1
fi
