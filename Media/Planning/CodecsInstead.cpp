#include "Media/Planning/CodecsInstead.h"

#include "Media/NearestNames.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/EncoderChoice.h"
#include "Media/Probe/FFmpegNames.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatFile.h"

#include <algorithm>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatFile;

constexpr std::size_t kMost = 3;

/// Names with how far behind the best ones they come.
using Ranked = std::vector<std::pair<int, std::string>>;

std::vector<std::string> BestOf(Ranked ranked)
{
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& one, const auto& other) { return one.first < other.first; });
    std::vector<std::string> best;
    for (const auto& [rank, name] : ranked)
    {
        if (best.size() < kMost)
        {
            best.push_back(name);
        }
    }
    return best;
}

bool IsDefault(const AVOutputFormat& muxer, AVCodecID codec)
{
    return codec == muxer.video_codec || codec == muxer.audio_codec || codec == muxer.subtitle_codec;
}

struct WrittenContainer
{
    std::string name;
    const AVOutputFormat* muxer;
};

/// Those that can be written. Asked of FFmpeg once: it compares a name with those of all its muxers.
const std::vector<WrittenContainer>& GetWritten()
{
    static const std::vector<WrittenContainer> s_written = [] {
        std::vector<WrittenContainer> written;
        for (const std::string& name : Conf::GetContainerList())
        {
            const AVOutputFormat* const muxer = FindMuxer(name);
            if (muxer != nullptr && IsOneFile(name))
            {
                written.push_back({name, muxer});
            }
        }
        return written;
    }();
    return s_written;
}

struct EncodedCodec
{
    AVCodecID id;
    std::string name;
};

/// Those that can be encoded. Asked once, too.
const std::vector<EncodedCodec>& GetEncoded()
{
    static const std::vector<EncodedCodec> s_encoded = [] {
        std::vector<EncodedCodec> encoded;
        for (const auto& [id, name] : Conf::GetFFCodecsMap())
        {
            if (FindEncoder(name) != nullptr && !IsEncodingDisabled(name))
            {
                encoded.push_back({id, name});
            }
        }
        return encoded;
    }();
    return s_encoded;
}

} // namespace

std::vector<std::string> CodecsFor(const std::string& container, const std::string& codec)
{
    const AVOutputFormat* const muxer = FindMuxer(container);
    const auto kind = Conf::GetCodecMediaType(codec);
    Ranked ranked;
    for (const auto& [id, name] : GetEncoded())
    {
        if (muxer == nullptr || name == codec || Conf::GetCodecMediaType(name) != kind ||
            !CertainlyHolds(muxer, container, id))
        {
            continue;
        }
        const int rank = IsDefault(*muxer, id) ? 0 : Conf::HasVideoBitrateCurve(name) ? 2 : 4;
        ranked.emplace_back(rank + (NearestNames(codec, {name}).empty() ? 1 : 0), name);
    }
    return BestOf(std::move(ranked));
}

std::string AlternativesText(const std::vector<std::string>& names)
{
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        text += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    }
    return text;
}

std::vector<std::string> ContainersFor(const std::string& codec)
{
    const AVCodecID id = CodecNumberOf(codec);
    const std::vector<std::string> usual = {
        IFormatFile::FORMAT_MP4, IFormatFile::FORMAT_MATROSKA, IFormatFile::FORMAT_WEBM,
        IFormatFile::FORMAT_MOV, IFormatFile::FORMAT_OGG,      IFormatFile::FORMAT_AVI,
        IFormatFile::FORMAT_WAV, IFormatFile::FORMAT_MP3,      IFormatFile::FORMAT_FLAC};
    Ranked ranked;
    for (const auto& [container, muxer] : GetWritten())
    {
        const bool isUsual = std::find(usual.begin(), usual.end(), container) != usual.end();
        if (CertainlyHolds(muxer, container, id))
        {
            ranked.emplace_back((isUsual ? 0 : 2) + (IsDefault(*muxer, id) ? 0 : 1), container);
        }
    }
    return BestOf(std::move(ranked));
}

} // namespace Zelnor::Media
