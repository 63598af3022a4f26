// A library whose static objects copy the vocabulary, as those of the product's other libraries do.

#include "Tests/Package/VocabularyReader.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/IPropertyConstraint.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"

namespace Zelnor::Testing
{

namespace
{

std::vector<Constant> g_constants;

/// Derived, because some rows name another constant of their class as their text. Never made. Graphs
/// cannot be derived from.
template <class Owner>
struct Reader : Owner
{
    static void Read();
};

template <>
struct Reader<Conf::ITranscodingMetaGraph>
{
    static void Read();
};

void Add(const char* name, const std::string& expected, const std::string& read)
{
    g_constants.push_back({name, expected, read, &read});
}

template <>
void Reader<Conf::IFormat>::Read()
{
#define ZELNOR_TEXT(name, text) Add("IFormat::" #name, text, Conf::IFormat::name);
#include "Conf/Interfaces/Vocabulary/IFormat.def"
}

template <>
void Reader<Conf::IFormatFile>::Read()
{
#define ZELNOR_TEXT(name, text) Add("IFormatFile::" #name, text, Conf::IFormatFile::name);
#define ZELNOR_SELF(name) Add("IFormatFile::" #name, #name, Conf::IFormatFile::name);
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"
}

template <>
void Reader<Conf::IFormatCodec>::Read()
{
#define ZELNOR_TEXT(name, text) Add("IFormatCodec::" #name, text, Conf::IFormatCodec::name);
#define ZELNOR_SELF(name) Add("IFormatCodec::" #name, #name, Conf::IFormatCodec::name);
#define ZELNOR_CODEC(name) Add("IFormatCodec::" #name, #name, Conf::IFormatCodec::name);
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
}

template <>
void Reader<Conf::IFormatCodecVideo>::Read()
{
#define ZELNOR_TEXT(name, text) Add("IFormatCodecVideo::" #name, text, Conf::IFormatCodecVideo::name);
#define ZELNOR_SELF(name) Add("IFormatCodecVideo::" #name, #name, Conf::IFormatCodecVideo::name);
#define ZELNOR_CODEC(name) Add("IFormatCodecVideo::" #name, #name, Conf::IFormatCodecVideo::name);
#define ZELNOR_CODEC_AS(name, enumerator)                                                                    \
    Add("IFormatCodecVideo::" #name, #name, Conf::IFormatCodecVideo::name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
}

template <>
void Reader<Conf::IFormatCodecAudio>::Read()
{
#define ZELNOR_TEXT(name, text) Add("IFormatCodecAudio::" #name, text, Conf::IFormatCodecAudio::name);
#define ZELNOR_SELF(name) Add("IFormatCodecAudio::" #name, #name, Conf::IFormatCodecAudio::name);
#define ZELNOR_CODEC(name) Add("IFormatCodecAudio::" #name, #name, Conf::IFormatCodecAudio::name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
}

template <>
void Reader<Conf::IFormatCodecSubtitle>::Read()
{
#define ZELNOR_TEXT(name, text) Add("IFormatCodecSubtitle::" #name, text, Conf::IFormatCodecSubtitle::name);
#define ZELNOR_CODEC(name) Add("IFormatCodecSubtitle::" #name, #name, Conf::IFormatCodecSubtitle::name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
}

template <>
void Reader<Conf::IPreset>::Read()
{
#define ZELNOR_TEXT(name, text) Add("IPreset::" #name, text, Conf::IPreset::name);
#include "Conf/Interfaces/Vocabulary/IPreset.def"
}

template <>
void Reader<Conf::IPropertyConstraint>::Read()
{
#define ZELNOR_TEXT(name, text) Add("IPropertyConstraint::" #name, text, Conf::IPropertyConstraint::name);
#include "Conf/Interfaces/Vocabulary/IPropertyConstraint.def"
}

void Reader<Conf::ITranscodingMetaGraph>::Read()
{
#define ZELNOR_TEXT(name, text) Add("ITranscodingMetaGraph::" #name, text, Conf::ITranscodingMetaGraph::name);
#include "Conf/Interfaces/Vocabulary/ITranscodingMetaGraph.def"
}

const bool g_read = [] {
    Reader<Conf::IFormat>::Read();
    Reader<Conf::IFormatFile>::Read();
    Reader<Conf::IFormatCodec>::Read();
    Reader<Conf::IFormatCodecVideo>::Read();
    Reader<Conf::IFormatCodecAudio>::Read();
    Reader<Conf::IFormatCodecSubtitle>::Read();
    Reader<Conf::IPreset>::Read();
    Reader<Conf::IPropertyConstraint>::Read();
    Reader<Conf::ITranscodingMetaGraph>::Read();
    return true;
}();

} // namespace

const std::vector<Constant>& GetConstantsReadAtLoad() { return g_constants; }

} // namespace Zelnor::Testing
