#include "Media/Planning/StreamLimit.h"

#include "Media/MediaException.h"
#include "Media/Planning/MuxerTrial.h"
#include "Media/RecordText.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatCodec.h"

#include <algorithm>
#include <iterator>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Planning/StreamLimit";

std::vector<std::string> CodecsOf(const MediaFile& source, const StreamPlan& plan, StreamKind kind)
{
    std::vector<std::string> codecs;
    for (const PlannedStream& stream : plan.streams)
    {
        if (source.streams[stream.source].kind == kind)
        {
            codecs.push_back(TextUnder(stream.codec, Conf::IFormatCodec::TAG_CODEC_ID));
        }
    }
    return codecs;
}

} // namespace

std::size_t CountHeldAudio(const std::string& container, const std::vector<std::string>& videos,
                           const std::vector<std::string>& audio)
{
    for (std::size_t count = audio.size(); count > 0; --count)
    {
        std::vector<std::string> codecs = videos;
        std::copy_n(audio.begin(), count, std::back_inserter(codecs));
        if (MuxerTrial(container, codecs).Ask({}))
        {
            return count;
        }
    }
    return audio.size();
}

std::string TooManyAudioText(const std::string& container, std::size_t count)
{
    return "container " + container + " cannot hold " + Count(count, "audio stream");
}

void LimitStreams(const MediaFile& source, const StreamRequest& request, const std::string& container,
                  StreamPlan& plan)
{
    const std::vector<std::string> audio = CodecsOf(source, plan, StreamKind::Audio);
    if (audio.size() < 2)
    {
        return;
    }
    const std::size_t held = CountHeldAudio(container, CodecsOf(source, plan, StreamKind::Video), audio);
    if (held == audio.size())
    {
        return;
    }
    const std::string reason = TooManyAudioText(container, audio.size());
    if (!request.chosen.empty())
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>(Place{source.name}, reason));
    }
    std::size_t position = 0;
    const auto isTooMuch = [&](const PlannedStream& stream) {
        return source.streams[stream.source].kind == StreamKind::Audio && position++ >= held;
    };
    plan.streams.erase(std::remove_if(plan.streams.begin(), plan.streams.end(), isTooMuch),
                       plan.streams.end());
    plan.notes.push_back("'" + source.name + "': " + reason + ", so only " + std::to_string(held) +
                         " will be taken");
}

} // namespace Zelnor::Media
