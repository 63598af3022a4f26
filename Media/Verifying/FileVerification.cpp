#include "Media/Verifying/FileVerification.h"

#include "Media/ErrorText.h"
#include "Media/FFmpeg/Calls.h"
#include "Media/Planning/Containers.h"
#include "Media/Text.h"
#include "Media/Verifying/ContentsComparison.h"
#include "Media/Verifying/DurationComparison.h"
#include "Media/Verifying/MediaScan.h"
#include "Media/Verifying/SourceTruncation.h"
#include "Media/Verifying/StreamComparison.h"
#include "Media/Verifying/TagComparison.h"

extern "C" {
#include <libavutil/avstring.h>
}

#include <boost/algorithm/string/replace.hpp>

#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <future>
#include <iterator>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

namespace Zelnor::Media
{

namespace
{

/// Muxers of FFmpeg whose files do not say what is in them, so that nothing can read them back without being
/// told, and those whose files FFmpeg only writes.
constexpr const char* kMute = "a64,alaw,avm2,codec2raw,crc,data,f32be,f32le,f64be,f64le,ffmetadata,framecrc,"
                              "framehash,framemd5,g722,g726,g726le,gsm,hash,md5,mulaw,rawvideo,roq,rso,s16be,"
                              "s16le,s24be,s24le,s32be,s32le,s8,streamhash,swf,u16be,u16le,u24be,u24le,u32be,"
                              "u32le,u8,vidc,webp";

/// Demuxers under whose names, first one first, FFmpeg reads what the muxers write.
struct DemuxerOf
{
    const char* muxers;
    std::string_view demuxer;
};
constexpr std::array<DemuxerOf, 6> kDemuxers = {{
    {"mp4,mov,ipod,3gp,3g2,psp,ismv,f4v", "mov"},
    {"matroska,webm", "matroska"},
    {"mpeg,dvd,vob,svcd,vcd", "mpeg"},
    {"ogg,oga,ogv,opus,spx", "ogg"},
    {"mpegts", "mpegts"},
    {"avi", "avi"},
}};

/// Containers in whose files the streams stand in the order in which they were added. In others they stand
/// as they begin.
constexpr const char* kOrdered = "mp4,mov,ipod,3gp,3g2,psp,matroska,webm,avi,mpegts,nut,asf";

std::string KindAndCodec(StreamKind kind, const std::string& codec)
{
    return std::string(NameOf(kind)) + " " + codec;
}

/// Verifies one file.
class Verifier
{
public:
    Verifier(const std::string& name, const std::string& shown, const ExpectedFile& wanted,
             const FileVerificationOptions& options)
        : m_name(name), m_wanted(wanted), m_options(options), m_durations(wanted, options.isCancelled)
    {
        m_result.file = shown;
        const AVOutputFormat* const muxer = FindMuxer(wanted.container);
        m_muxer = muxer == nullptr ? "" : muxer->name;
    }

    TargetVerification Run()
    {
        if (IsMute())
        {
            return std::move(m_result);
        }
        try
        {
            LookAt();
        }
        catch (const ProbeException&)
        {
            Add("file", m_wanted.container, WithoutWorkName(ErrorText(std::current_exception())));
        }
        return std::move(m_result);
    }

private:
    /// Probing and decoding need nothing of each other. What calls back stays in this thread.
    /// \throw ProbeException
    void LookAt()
    {
        std::atomic<bool> isUnreadable = false;
        std::future<MediaFile> probe = std::async([this, &isUnreadable] { return Probe(isUnreadable); });
        MediaScan scan;
        try
        {
            scan = DecodeFile(
                m_name, m_options.depth,
                [this, &isUnreadable] {
                    return isUnreadable || (m_options.isCancelled && m_options.isCancelled());
                },
                m_options.onProgress);
        }
        catch (const ProbeException&)
        {
            // What the probe says of the file comes first.
            probe.get();
            throw;
        }
        const MediaFile found = probe.get();
        if (!scan.isCancelled)
        {
            Compare(found, scan);
        }
    }

    MediaFile Probe(std::atomic<bool>& isUnreadable) const
    {
        try
        {
            return ProbeMedia(m_name);
        }
        catch (...)
        {
            isUnreadable = true;
            throw;
        }
    }

    void Add(const std::string& what, const std::string& wanted, const std::string& found)
    {
        m_result.differences.push_back({m_wanted.place, what, wanted, found});
    }

    void Add(std::vector<TargetDifference> differences)
    {
        std::move(differences.begin(), differences.end(), std::back_inserter(m_result.differences));
    }

    std::string WithoutWorkName(std::string text) const
    {
        boost::replace_all(text, m_name + ": ", "");
        return text;
    }

    /// Whether no more can be seen of the file than whether there is anything in it.
    bool IsMute()
    {
        if (av_match_list(m_muxer.c_str(), kMute, ',') == 0)
        {
            return false;
        }
        std::error_code error;
        if (std::filesystem::file_size(m_name, error) == 0 || error)
        {
            Add("file", m_wanted.container, "an empty file");
        }
        m_result.notes.push_back("'" + m_result.file + "' cannot be verified, because " + m_wanted.container +
                                 " files do not say what is in them");
        return true;
    }

    void Compare(const MediaFile& found, const MediaScan& scan)
    {
        CompareContainer(found);
        CompareStreams(found, scan);
        Add(CompareFileTags(m_wanted, found));
        CheckSources();
    }

    /// Half a film is as long as the half source that it was made from.
    void CheckSources()
    {
        std::set<std::size_t> known;
        for (const ExpectedStream& stream : m_wanted.streams)
        {
            const bool isNew = stream.source < m_wanted.sources.size() && known.insert(stream.source).second;
            if (!isNew || m_wanted.isPicture || IsPartOf(m_wanted.sources[stream.source]))
            {
                continue;
            }
            const MediaFile& source = m_wanted.sources[stream.source];
            if (const auto truncation = FindTruncation(source))
            {
                m_result.differences.push_back({stream.place, "source '" + source.name + "'",
                                                truncation->wanted, truncation->found + ", it is cut"});
            }
        }
    }

    /// Whether the part of the source that the file is made from ends before what there is of it.
    bool IsPartOf(const MediaFile& source) const
    {
        return m_wanted.span.end && source.duration && *m_wanted.span.end <= *source.duration;
    }

    void CompareContainer(const MediaFile& found)
    {
        const auto* const row = std::find_if(kDemuxers.begin(), kDemuxers.end(), [this](const auto& known) {
            return av_match_list(m_muxer.c_str(), known.muxers, ',') != 0;
        });
        const std::string first = found.demuxer.substr(0, found.demuxer.find(','));
        if (row != kDemuxers.end() && row->demuxer != first)
        {
            Add("container", m_wanted.container, first);
        }
    }

    void CompareStreams(const MediaFile& found, const MediaScan& scan)
    {
        std::vector<bool> isTaken(found.streams.size(), false);
        std::vector<std::size_t> order;
        for (const ExpectedStream& wanted : m_wanted.streams)
        {
            const std::size_t index = NextOf(wanted, found, isTaken);
            if (index == found.streams.size())
            {
                m_result.differences.push_back(
                    {wanted.place, "stream", KindAndCodec(wanted.kind, wanted.codec), "none"});
                continue;
            }
            isTaken[index] = true;
            order.push_back(index);
            CompareOne(wanted, found.streams[index],
                       index < scan.streams.size() ? scan.streams[index] : StreamScan());
        }
        if (!std::is_sorted(order.begin(), order.end()) && av_match_list(m_muxer.c_str(), kOrdered, ',') != 0)
        {
            Add("order of streams", Listed(m_wanted), Listed(found));
        }
        CompareRest(found, isTaken);
        Add(CompareContents(m_wanted, found, isTaken));
    }

    /// The streams of each kind stand in the job's order.
    std::size_t NextOf(const ExpectedStream& wanted, const MediaFile& found,
                       const std::vector<bool>& isTaken) const
    {
        const bool mayBeCover = wanted.isCopied && m_wanted.SourceOf(wanted).isAttachedPicture;
        std::size_t index = 0;
        while (index < found.streams.size() && (isTaken[index] || found.streams[index].kind != wanted.kind ||
                                                (found.streams[index].isAttachedPicture && !mayBeCover)))
        {
            ++index;
        }
        return index;
    }

    void CompareOne(const ExpectedStream& wanted, const MediaStream& stream, const StreamScan& scan)
    {
        Add(CompareStream(m_wanted, wanted, {stream, scan}));
        Add(CompareStreamTags(wanted, stream));
        if (!m_wanted.sources.empty())
        {
            Add(m_durations.Compare(wanted, stream, scan));
        }
        if (!scan.hasDecoder)
        {
            m_result.notes.push_back("the installed FFmpeg does not have a decoder for " + stream.codec +
                                     ", so a stream of '" + m_result.file + "' is not decoded");
        }
    }

    /// What the muxer adds on its own is neither video nor audio nor a subtitle.
    void CompareRest(const MediaFile& found, const std::vector<bool>& isTaken)
    {
        for (std::size_t i = 0; i < found.streams.size(); ++i)
        {
            const MediaStream& stream = found.streams[i];
            if (!isTaken[i] && IsConvertible(stream.kind) && !stream.isAttachedPicture)
            {
                Add("stream " + std::to_string(stream.index), "none",
                    KindAndCodec(stream.kind, stream.codec));
            }
        }
    }

    template <class File>
    static std::string Listed(const File& file)
    {
        std::string text;
        for (const auto& stream : file.streams)
        {
            if (IsConvertible(stream.kind))
            {
                text += (text.empty() ? "" : ", ") + KindAndCodec(stream.kind, stream.codec);
            }
        }
        return text;
    }

    const std::string& m_name;
    const ExpectedFile& m_wanted;
    const FileVerificationOptions& m_options;
    std::string m_muxer;
    DurationComparison m_durations;
    TargetVerification m_result;
};

} // namespace

TargetVerification VerifyFile(const std::string& name, const std::string& shown, const ExpectedFile& wanted,
                              const FileVerificationOptions& options)
{
    return Verifier(name, shown, wanted, options).Run();
}

} // namespace Zelnor::Media
