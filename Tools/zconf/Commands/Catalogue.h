#pragma once

#include "Tools/zconf/Console/Description.h"

#include <string>
#include <vector>

/// \file
/// The library's vocabulary and registry as lists, with a description of each entry.

namespace Zelnor::Tool
{

/// A codec of the vocabulary, whether or not the registry's tables have it.
struct CodecEntry
{
    std::string id;         ///< "CODEC_ID_H264"
    std::string kind;       ///< "video", "audio", "subtitle" or "other"
    std::string ffmpegName; ///< "AV_CODEC_ID_H264"; empty when FFmpeg does not have the codec
};

/// All codecs, in the order of the vocabulary.
const std::vector<CodecEntry>& AllCodecs();
/// The codec with that name, ignoring case and the prefix "CODEC_ID_"; null when there is none.
const CodecEntry* FindCodec(const std::string& name);
std::vector<std::string> CodecNames();

/// The names of all containers, each once: the format list, then what only the image and audio lists hold.
std::vector<std::string> ContainerNames();
/// "image", "audio" or "other"
std::string ContainerKind(const std::string& format);
/// Empty when the container does not have one.
std::string DefaultExtension(const std::string& format);

std::vector<std::string> SampleFormatNames();
std::vector<std::string> LayoutNames();
std::vector<std::string> PixelFormatNames();
/// All names of these lists.
std::vector<std::string> AllNames();
/// The groups of a file dialog, and the one that it does not offer.
std::vector<std::string> FileGroupNames();

/// The flags that are set, of "yuv", "rgb", "alpha" and "planar".
std::vector<std::string> PixelFormatFlags(int flags);
/// "full", "limited" or "unspecified"
std::string ColorRangeName(int colorRange);

/// The names of the accelerators on the command line; the positions are the values of the enumeration.
const std::vector<std::string>& AcceleratorNames();
/// The accelerators that encode or decode the codec, with their implementations: "nvenc ENCODER_NVENC_H264".
std::vector<std::string> AcceleratedEncodersOf(const std::string& codecId);
std::vector<std::string> AcceleratedDecodersOf(const std::string& codecId);

// What `zconf list` shows, a description for each entry.
std::vector<Description> ListCodecs();
std::vector<Description> ListContainers();
std::vector<Description> ListMuxers();
std::vector<Description> ListDecoders();
std::vector<Description> ListEncoders();
std::vector<Description> ListAccelerators();
std::vector<Description> ListPresetsByName();
std::vector<Description> ListPixelFormats();
std::vector<Description> ListSampleFormats();
std::vector<Description> ListLayouts();

} // namespace Zelnor::Tool
