#pragma once

#include "Conf/Interfaces/IFormat.h"
#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// Every text of the vocabulary that may be a key of a codec's record, each once.
inline std::vector<std::string> VocabularyKeys()
{
    using namespace Conf;
    std::vector<std::string> keys = {
        "PIXELFORMAT",
#define ZELNOR_TEXT(name, text) IFormat::name,
#include "Conf/Interfaces/Vocabulary/IFormat.def"
#define ZELNOR_TEXT(name, text) IFormatCodec::name,
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
#define ZELNOR_TEXT(name, text) IFormatCodecVideo::name,
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
#define ZELNOR_TEXT(name, text) IFormatCodecAudio::name,
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
#define ZELNOR_TEXT(name, text) IFormatCodecSubtitle::name,
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
    };
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    return keys;
}

} // namespace Zelnor::Testing
