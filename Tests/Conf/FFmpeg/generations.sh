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
# read_headers <folder of headers> <scratch folder>
read_headers() {
    mkdir -p "$2/CMakeFiles"
    cmake "-DCMAKE_CXX_COMPILER=$compiler" "-DSOURCE=$source" "-DHEADERS=$1" "-DSCRATCH=$2" -P "$scratch/read.cmake" 2>&1 |
        tr -s ' \n' '  '
}

# generation <folder of headers> <libavcodec's major> <rows of video> <of audio> <of subtitles> <of others> <codec IDs>
generation() {
    local work=$scratch/$1 said
    said=$(read_headers "$source/Tests/Conf/Fixtures/$1" "$work")
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
    "$compiler" -std=c++17 -fsyntax-only -I "$work" -I "$source/Tests/Conf/Fixtures/$1" -I "$source" "$work/tables.cpp"
}

running=()
generation ffmpeg '' 187 134 21 9 349 &
running+=("$!")
generation generations/4.3 58 186 132 21 9 345 &
running+=("$!")
generation generations/5.1 59 186 132 21 9 345 &
running+=("$!")
generation generations/7.1 61 185 132 21 9 344 &
running+=("$!")
generation generations/9.0 63 182 132 21 9 341 &
running+=("$!")
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
