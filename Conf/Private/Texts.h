#pragma once

// Private to the library, not installed: the texts of constants, for our own tables. The loader looks for the
// name of every constant that the library names, since a program may have a copy; a text is simply there.

#include <string_view>

namespace Zelnor::Conf::Texts
{

struct IFormatFile
{
#define ZELNOR_TEXT(name, text) static constexpr std::string_view name = text;
#define ZELNOR_SELF(name) static constexpr std::string_view name = #name;
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"
};

struct IFormatCodec
{
#define ZELNOR_TEXT(name, text) static constexpr std::string_view name = text;
#define ZELNOR_SELF(name) static constexpr std::string_view name = #name;
#define ZELNOR_CODEC(name) static constexpr std::string_view name = #name;
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
};

struct IFormatCodecVideo
{
#define ZELNOR_TEXT(name, text) static constexpr std::string_view name = text;
#define ZELNOR_SELF(name) static constexpr std::string_view name = #name;
#define ZELNOR_CODEC(name) static constexpr std::string_view name = #name;
#define ZELNOR_CODEC_AS(name, enumerator) static constexpr std::string_view name = #name;
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
};

struct IFormatCodecAudio
{
#define ZELNOR_TEXT(name, text) static constexpr std::string_view name = text;
#define ZELNOR_SELF(name) static constexpr std::string_view name = #name;
#define ZELNOR_CODEC(name) static constexpr std::string_view name = #name;
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
};

struct IPreset
{
#define ZELNOR_TEXT(name, text) static constexpr std::string_view name = text;
#include "Conf/Interfaces/Vocabulary/IPreset.def"
};

} // namespace Zelnor::Conf::Texts
