// The constants of the vocabulary, as variables of namespaces: to a linker, those have the same names as
// static members of classes. The members are strings, which code would make one by one whenever the library
// is loaded, each where the loader found its name; these are made by the compiler. So no header with the
// classes may be included here, nor may this source be compiled together with others.

#include "Conf/Private/ConstantText.h"
#include "Core/Interfaces/Export.h"

#define ZELNOR_DEFINE(name, text)                                                                            \
    extern ZELNOR_API const ConstantText name;                                                               \
    ZELNOR_CONSTANT name(text);

namespace Zelnor::Conf
{

ZELNOR_DEFINE(TAG_OBJECT, "object_name")
ZELNOR_DEFINE(TAG_PIX_FMT, "PIXELFORMAT")

namespace IFormat
{
#define ZELNOR_TEXT(name, text) ZELNOR_DEFINE(name, text)
#include "Conf/Interfaces/Vocabulary/IFormat.def"
} // namespace IFormat

namespace IFormatFile
{
#define ZELNOR_TEXT(name, text) ZELNOR_DEFINE(name, text)
#define ZELNOR_SELF(name) ZELNOR_DEFINE(name, #name)
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"
} // namespace IFormatFile

namespace IFormatCodec
{
#define ZELNOR_TEXT(name, text) ZELNOR_DEFINE(name, text)
#define ZELNOR_SELF(name) ZELNOR_DEFINE(name, #name)
#define ZELNOR_CODEC(name) ZELNOR_DEFINE(name, #name)
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
} // namespace IFormatCodec

namespace IFormatCodecVideo
{
#define ZELNOR_TEXT(name, text) ZELNOR_DEFINE(name, text)
#define ZELNOR_SELF(name) ZELNOR_DEFINE(name, #name)
#define ZELNOR_CODEC(name) ZELNOR_DEFINE(name, #name)
#define ZELNOR_CODEC_AS(name, enumerator) ZELNOR_DEFINE(name, #name)
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
} // namespace IFormatCodecVideo

namespace IFormatCodecAudio
{
#define ZELNOR_TEXT(name, text) ZELNOR_DEFINE(name, text)
#define ZELNOR_SELF(name) ZELNOR_DEFINE(name, #name)
#define ZELNOR_CODEC(name) ZELNOR_DEFINE(name, #name)
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
} // namespace IFormatCodecAudio

namespace IFormatCodecSubtitle
{
#define ZELNOR_TEXT(name, text) ZELNOR_DEFINE(name, text)
#define ZELNOR_CODEC(name) ZELNOR_DEFINE(name, #name)
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
} // namespace IFormatCodecSubtitle

namespace IPreset
{
#define ZELNOR_TEXT(name, text) ZELNOR_DEFINE(name, text)
#include "Conf/Interfaces/Vocabulary/IPreset.def"
} // namespace IPreset

namespace IPropertyConstraint
{
#define ZELNOR_TEXT(name, text) ZELNOR_DEFINE(name, text)
#include "Conf/Interfaces/Vocabulary/IPropertyConstraint.def"
} // namespace IPropertyConstraint

namespace ITranscodingMetaGraph
{
#define ZELNOR_TEXT(name, text) ZELNOR_DEFINE(name, text)
#include "Conf/Interfaces/Vocabulary/ITranscodingMetaGraph.def"
} // namespace ITranscodingMetaGraph

// kept: without PCM_U16BE, although with PCM_U16LE
extern ZELNOR_API const ConstantText PCMCodecs[13];
ZELNOR_CONSTANT PCMCodecs[] = {
    IFormatCodecAudio::CODEC_ID_PCM_U8,    IFormatCodecAudio::CODEC_ID_PCM_S8,
    IFormatCodecAudio::CODEC_ID_PCM_U16LE, IFormatCodecAudio::CODEC_ID_PCM_S16BE,
    IFormatCodecAudio::CODEC_ID_PCM_S16LE, IFormatCodecAudio::CODEC_ID_PCM_U32BE,
    IFormatCodecAudio::CODEC_ID_PCM_U32LE, IFormatCodecAudio::CODEC_ID_PCM_S24BE,
    IFormatCodecAudio::CODEC_ID_PCM_S24LE, IFormatCodecAudio::CODEC_ID_PCM_S32BE,
    IFormatCodecAudio::CODEC_ID_PCM_S32LE, IFormatCodecAudio::CODEC_ID_PCM_U24BE,
    IFormatCodecAudio::CODEC_ID_PCM_U24LE,
};

} // namespace Zelnor::Conf
