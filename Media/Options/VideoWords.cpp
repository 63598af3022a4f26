#include "Media/Options/VideoWords.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <iterator>

namespace Zelnor::Media
{

bool IsVideoWord(std::string_view prefix, const std::string& text)
{
    struct Word
    {
        std::string_view constant;
        const std::string* text;
    };
    static const Word s_words[] = {
#define ZELNOR_TEXT(name, words) {#name, &Conf::IFormatCodecVideo::name},
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
    };
    return std::any_of(std::begin(s_words), std::end(s_words), [&](const Word& word) {
        return word.constant.substr(0, prefix.size()) == prefix && *word.text == text;
    });
}

} // namespace Zelnor::Media
