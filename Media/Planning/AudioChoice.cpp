#include "Media/Planning/AudioChoice.h"

#include "Media/MediaException.h"
#include "Media/Planning/LanguageCodes.h"

#include <algorithm>
#include <iterator>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Planning/AudioChoice";

/// Empty when it is not known.
std::string LanguageOf(const MediaStream& stream)
{
    const Core::Property& tags = stream.descriptor->GetMetadata();
    const auto language = tags.FindChild(Conf::IFormatCodec::TAG_LANGUAGE);
    return language == tags.end() || language->GetType() != PROPERTY_TYPE_STRING ? "" : language->GetString();
}

std::string LanguagesText(const std::vector<const MediaStream*>& streams)
{
    std::string text;
    for (const MediaStream* const stream : streams)
    {
        const std::string language = LanguageOf(*stream);
        text += (text.empty() ? "" : ", ") + (language.empty() ? "one that is not known" : language);
    }
    return text.empty() ? "none" : text;
}

std::vector<const MediaStream*> InLanguage(const std::vector<const MediaStream*>& streams,
                                           const std::string& language)
{
    std::vector<const MediaStream*> found;
    std::copy_if(
        streams.begin(), streams.end(), std::back_inserter(found),
        [&language](const MediaStream* stream) { return IsSameLanguage(LanguageOf(*stream), language); });
    return found;
}

} // namespace

bool IsAudioChosen(const StreamRequest& request)
{
    return request.allAudio || !request.audioLanguages.empty();
}

std::vector<const MediaStream*> ChooseAudio(const MediaFile& source,
                                            const std::vector<const MediaStream*>& ranked,
                                            const StreamRequest& request)
{
    std::vector<const MediaStream*> inOrder = ranked;
    std::sort(inOrder.begin(), inOrder.end(),
              [](const MediaStream* one, const MediaStream* other) { return one->index < other->index; });
    if (request.audioLanguages.empty())
    {
        return inOrder;
    }
    std::vector<const MediaStream*> chosen;
    for (const std::string& language : request.audioLanguages)
    {
        const auto found = InLanguage(request.allAudio ? inOrder : ranked, language);
        if (found.empty())
        {
            ZELNOR_THROW(kUnit, MakeError<PlanException>(Place{source.name},
                                                         "there is no audio in '" + language +
                                                             "'; the file has " + LanguagesText(inOrder)));
        }
        const auto end = request.allAudio ? found.end() : found.begin() + 1;
        std::copy_if(found.begin(), end, std::back_inserter(chosen), [&chosen](const MediaStream* stream) {
            return std::find(chosen.begin(), chosen.end(), stream) == chosen.end();
        });
    }
    return chosen;
}

} // namespace Zelnor::Media
