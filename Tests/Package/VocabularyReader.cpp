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

using namespace Conf;

namespace
{

const std::vector<Constant> g_constants = {
#define ZELNOR_TEXT(name, text) {"IFormat::" #name, text, IFormat::name},
#include "Conf/Interfaces/Vocabulary/IFormat.def"

#define ZELNOR_TEXT(name, text) {"IFormatFile::" #name, text, IFormatFile::name},
#define ZELNOR_SELF(name) {"IFormatFile::" #name, #name, IFormatFile::name},
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"

#define ZELNOR_TEXT(name, text) {"IFormatCodec::" #name, text, IFormatCodec::name},
#define ZELNOR_SELF(name) {"IFormatCodec::" #name, #name, IFormatCodec::name},
#define ZELNOR_CODEC(name) {"IFormatCodec::" #name, #name, IFormatCodec::name},
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"

#define ZELNOR_TEXT(name, text) {"IFormatCodecVideo::" #name, text, IFormatCodecVideo::name},
#define ZELNOR_SELF(name) {"IFormatCodecVideo::" #name, #name, IFormatCodecVideo::name},
#define ZELNOR_CODEC(name) {"IFormatCodecVideo::" #name, #name, IFormatCodecVideo::name},
#define ZELNOR_CODEC_AS(name, enumerator) {"IFormatCodecVideo::" #name, #name, IFormatCodecVideo::name},
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"

#define ZELNOR_TEXT(name, text) {"IFormatCodecAudio::" #name, text, IFormatCodecAudio::name},
#define ZELNOR_SELF(name) {"IFormatCodecAudio::" #name, #name, IFormatCodecAudio::name},
#define ZELNOR_CODEC(name) {"IFormatCodecAudio::" #name, #name, IFormatCodecAudio::name},
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"

#define ZELNOR_TEXT(name, text) {"IFormatCodecSubtitle::" #name, text, IFormatCodecSubtitle::name},
#define ZELNOR_CODEC(name) {"IFormatCodecSubtitle::" #name, #name, IFormatCodecSubtitle::name},
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"

#define ZELNOR_TEXT(name, text) {"IPreset::" #name, text, IPreset::name},
#include "Conf/Interfaces/Vocabulary/IPreset.def"

#define ZELNOR_TEXT(name, text) {"IPropertyConstraint::" #name, text, IPropertyConstraint::name},
#include "Conf/Interfaces/Vocabulary/IPropertyConstraint.def"

#define ZELNOR_TEXT(name, text) {"ITranscodingMetaGraph::" #name, text, ITranscodingMetaGraph::name},
#include "Conf/Interfaces/Vocabulary/ITranscodingMetaGraph.def"
};

} // namespace

const std::vector<Constant>& GetConstantsReadAtLoad() { return g_constants; }

} // namespace Zelnor::Testing
