#pragma once

#include "Tools/zconf/Console/Description.h"

#include <string>
#include <vector>

/// \file
/// The library's vocabulary and registry as lists, with a description of each entry.

namespace Zelnor::Tool
{

/// A codec of the vocabulary, whether or not it is in one of the registry's tables.
struct CodecEntry
{
    std::string id;         ///< "CODEC_ID_H264"
    std::string kind;       ///< "video", "audio", "subtitle" or "other"
    std::string ffmpegName; ///< "AV_CODEC_ID_H264"; empty when FFmpeg is not known to have one
};

/// All codecs, in the order of the vocabulary.
const std::vector<CodecEntry>& AllCodecs();
/// The codec of that name; the prefix "CODEC_ID_" and the letter case do not count. Null when there is none.
const CodecEntry* FindCodec(const std::string& name);
std::vector<std::string> CodecNames();

/// The names of all containers, each once: those that can be written, then those that can only be read.
std::vector<std::string> ContainerNames();
/// "image", "audio" or "other"
std::string ContainerKind(const std::string& format);
/// Empty when the container has none.
std::string DefaultExtension(const std::string& format);

std::vector<std::string> SampleFormatNames();
std::vector<std::string> LayoutNames();
std::vector<std::string> PixelFormatNames();

/// "4:2:0"-like words for the flags of a pixel format: "yuv", "rgb", "alpha", "planar".
std::vector<std::string> PixelFormatFlags(int flags);
/// "full", "limited" or "unspecified"
std::string ColorRangeName(int colorRange);

/// The names of the accelerators, as the command line has them.
const std::vector<std::string>& AcceleratorNames();
/// "nvenc ENCODER_NVENC_H264": each accelerator that encodes (or decodes) the codec, with its implementation.
std::vector<std::string> AcceleratedEncodersOf(const std::string& codecId);
std::vector<std::string> AcceleratedDecodersOf(const std::string& codecId);

// What `zconf list` shows, a description for each entry.
std::vector<Description> ListCodecs();
std::vector<Description> ListContainers();
std::vector<Description> ListMuxers();
std::vector<Description> ListDecoders();
std::vector<Description> ListEncoders();
std::vector<Description> ListAccelerators();
std::vector<Description> ListPixelFormats();
std::vector<Description> ListSampleFormats();
std::vector<Description> ListLayouts();

} // namespace Zelnor::Tool
