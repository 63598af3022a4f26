#pragma once

// Private to the library, not installed.

#include <cstdint>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avstring.h>
#include <libavutil/base64.h>
#include <libavutil/channel_layout.h>
#include <libavutil/crc.h>
#include <libavutil/display.h>
#include <libavutil/log.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

/// \file
/// Half of the starting time of a program that links FFmpeg's libraries is what they bring along: some 130
/// libraries, which the dynamic linker maps and binds before `main`. Many commands call nothing of FFmpeg. So
/// it is not this library that needs FFmpeg's, but a small one beside it, `libZelnorFFmpeg`, which holds
/// nothing but a table of the functions that we call. It is loaded when the first of them is called
/// (Loader.cpp). Sources of this library that call FFmpeg include Calls.h and are written as if FFmpeg were
/// linked.
///
/// Where all is linked into one program, the table is as well (Linked.cpp).

namespace Zelnor::Media
{

/// A number that differs when the rows differ: a table of another build must not be used.
constexpr std::uint64_t FunctionRows()
{
    constexpr const char* kRows[] = {
#define ZELNOR_FFMPEG_FUNCTION(name) #name,
#include "Media/FFmpeg/Functions.def"
#undef ZELNOR_FFMPEG_FUNCTION
    };
    std::uint64_t hash = LIBAVFORMAT_VERSION_MAJOR;
    for (const char* row : kRows)
    {
        for (; *row != '\0'; ++row)
        {
            hash = hash * 1099511628211U + static_cast<unsigned char>(*row);
        }
        ++hash;
    }
    return hash;
}

struct FunctionTable
{
    std::uint64_t rows;
#define ZELNOR_FFMPEG_FUNCTION(name) decltype(&::name) name;
#include "Media/FFmpeg/Functions.def"
#undef ZELNOR_FFMPEG_FUNCTION
};

} // namespace Zelnor::Media

extern "C" {
/// What libZelnorFFmpeg is for.
extern __attribute__((visibility("default"))) const Zelnor::Media::FunctionTable ZelnorFFmpegFunctions;
}
