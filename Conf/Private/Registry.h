#pragma once

// Private to the library, not installed: the registry's tables, which Stub.cpp defines, for the sources that
// look things up in them.

#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Core/Interfaces/MediaType.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Zelnor::Conf
{

/// What exceptions of the registry and of the presets' vocabulary record as their place.
inline constexpr const char* kStubUnit = "Conf/Interfaces/Stub";

struct Accelerated
{
    IFormatCodecVideo::AcceleratorType accelerator;
    std::string_view codec;
    std::string_view implementation;
};

// clang-format off
constexpr std::size_t kAcceleratedEncoders = 0
#define ZELNOR_ENCODER(accelerator, codec, implementation) + 1
#include "Conf/Interfaces/Vocabulary/Accelerated.def"
;
constexpr std::size_t kAcceleratedDecoders = 0
#define ZELNOR_DECODER(accelerator, codec, implementation) + 1
#include "Conf/Interfaces/Vocabulary/Accelerated.def"
;
// clang-format on

extern const Accelerated acceleratedEncoders[kAcceleratedEncoders];
extern const Accelerated acceleratedDecoders[kAcceleratedDecoders];

extern const std::vector<std::string> g_containerList;
extern const std::vector<std::string> g_formatList;
extern const std::vector<std::string> g_fileFormatParserDisabled;
extern const std::vector<std::string> g_fileFormatMuxerDisabled;
extern const std::vector<std::string> g_decodersDisabled;
extern const std::vector<std::string> g_encodersDisabled;
extern const std::vector<std::string> g_codecExternal;
extern const std::vector<std::string> g_muxerImplList;
extern const std::vector<std::string> g_parserImplList;
extern const std::vector<std::string> g_decoderImplList;
extern const std::vector<std::string> g_encoderImplList;
extern const std::vector<std::string> g_imageFormatList;
extern const std::vector<std::string> g_audioFormatList;

/// A constant that belongs to one kind of stream.
struct TypedText
{
    std::string_view text;
    MediaType mediaType;
};

/// The order decides which text a media type is given.
extern const TypedText mapStringToMediaType[4];

} // namespace Zelnor::Conf
