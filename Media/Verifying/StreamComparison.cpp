#include "Media/Verifying/StreamComparison.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/VideoGeometry.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/RecordText.h"
#include "Media/Verifying/BitrateComparison.h"
#include "Media/Verifying/Numbers.h"
#include "Media/Verifying/PictureComparison.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

namespace Zelnor::Media
{

namespace
{

using Conf::FrameInfo;
using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;

std::optional<long long> NumberUnder(const Property& record, const std::string& key)
{
    const auto child = record.FindChild(key);
    return child != record.end() && child->GetType() == PROPERTY_TYPE_INT64 ? std::optional(child->GetInt64())
                                                                            : std::nullopt;
}

std::string SizeText(const FrameInfo& frame)
{
    return std::to_string(frame.width) + "x" + std::to_string(frame.height);
}

double AspectOf(const FrameInfo& frame)
{
    return static_cast<double>(frame.width) * frame.ax / (static_cast<double>(frame.height) * frame.ay);
}

bool IsFrame(const FrameInfo& frame)
{
    return frame.width != 0 && frame.height != 0 && frame.ax != 0 && frame.ay != 0;
}

double RateOf(const Property::Ratio& rate)
{
    return static_cast<double>(rate.numerator()) / static_cast<double>(rate.denominator());
}

/// Profiles of H.264 in the order in which each one holds the ones before it: an encoder that needs less than
/// it may use says so in the stream.
bool HoldsProfile(const std::string& wanted, const std::string& found)
{
    static const std::array<const std::string*, 6> s_profiles = {
        &IFormatCodecVideo::TAG_X264_PROFILE_BASELINE, &IFormatCodecVideo::TAG_X264_PROFILE_MAIN,
        &IFormatCodecVideo::TAG_X264_PROFILE_HIGH,     &IFormatCodecVideo::TAG_X264_PROFILE_HIGH10,
        &IFormatCodecVideo::TAG_X264_PROFILE_HIGH422,  &IFormatCodecVideo::TAG_X264_PROFILE_HIGH444};
    const auto place = [](const std::string& word) {
        return std::find_if(s_profiles.begin(), s_profiles.end(),
                            [&word](const std::string* known) { return *known == word; });
    };
    return place(found) <= place(wanted);
}

/// Compares one stream.
class Comparison
{
public:
    Comparison(const ExpectedFile& file, const ExpectedStream& wanted, const FoundStream& found)
        : m_file(file), m_wanted(wanted), m_stream(found.stream), m_scan(found.scan),
          m_record(found.stream.descriptor->GetProperty())
    {
        const AVOutputFormat* const muxer = FindMuxer(file.container);
        m_hasTimes = muxer != nullptr && (muxer->flags & AVFMT_NOTIMESTAMPS) == 0;
    }

    std::vector<TargetDifference> Find()
    {
        if (m_stream.codec != m_wanted.codec)
        {
            Add("codec", m_wanted.codec, m_stream.codec);
            return std::move(m_differences);
        }
        if (m_wanted.kind == StreamKind::Video)
        {
            CompareVideo();
        }
        else if (m_wanted.kind == StreamKind::Audio)
        {
            CompareAudio();
        }
        CompareDecoding();
        for (TargetDifference& difference : CompareBitrate(m_wanted, m_scan))
        {
            m_differences.push_back(std::move(difference));
        }
        return std::move(m_differences);
    }

private:
    void Add(const std::string& what, const std::string& wanted, const std::string& found)
    {
        m_differences.push_back({m_wanted.place, what, wanted, found});
    }

    /// What the stream must be: a stream that is copied is what its source is.
    const Property& Wanted() const
    {
        return m_wanted.isCopied ? m_file.SourceOf(m_wanted).descriptor->GetProperty() : m_wanted.record;
    }

    void CompareVideo()
    {
        CompareProfile();
        CompareFrame();
        CompareRate();
        for (TargetDifference& difference : ComparePicture(m_file, m_wanted, m_stream))
        {
            m_differences.push_back(std::move(difference));
        }
    }

    void CompareProfile()
    {
        const std::string wanted = TextUnder(Wanted(), IFormatCodec::TAG_PROFILE);
        const std::string found = TextUnder(m_record, IFormatCodec::TAG_PROFILE);
        const bool isH264 = m_stream.codec == avcodec_get_name(AV_CODEC_ID_H264);
        const bool isAac = m_stream.codec == avcodec_get_name(AV_CODEC_ID_AAC);
        const bool isSame = isH264 ? HoldsProfile(wanted, found) : !isAac || wanted == found;
        if (!wanted.empty() && !found.empty() && !isSame)
        {
            Add("profile", wanted, found);
        }
    }

    static FrameInfo FrameOf(const Property& record)
    {
        if (!record.ChildExists(IFormatCodecVideo::TAG_WIDTH) ||
            !record.ChildExists(IFormatCodecVideo::TAG_HEIGHT))
        {
            return {0, 0, 0, 0};
        }
        const auto video = IFormatCodecVideo::Create();
        video->SetProperty(record);
        return video->GetFrameInfo();
    }

    void CompareFrame()
    {
        const FrameInfo wanted = FrameOf(Wanted());
        const FrameInfo found = FrameOf(m_record);
        if (!IsFrame(wanted))
        {
            return;
        }
        if (found.width != wanted.width || found.height != wanted.height)
        {
            Add("size", SizeText(wanted), SizeText(found));
            return;
        }
        constexpr double kNoticeable = 0.01;
        if (!IsNear(AspectOf(found), AspectOf(wanted), kNoticeable))
        {
            Add("display aspect ratio", DecimalText(AspectOf(wanted)), DecimalText(AspectOf(found)));
        }
        const unsigned int rotation = m_wanted.isCopied ? m_file.SourceOf(m_wanted).rotation : 0;
        if (m_stream.rotation != rotation)
        {
            Add("rotation", std::to_string(rotation), std::to_string(m_stream.rotation));
        }
    }

    /// A container may round each frame's time; over the whole stream the rate is right.
    std::optional<double> MeasuredRate() const
    {
        constexpr double kPerSecond = 1e6;
        const std::optional<std::int64_t> length = m_scan.Length();
        return m_scan.packets > 1 && length && *length > 0
                   ? std::optional(static_cast<double>(m_scan.packets) * kPerSecond /
                                   static_cast<double>(*length))
                   : std::nullopt;
    }

    void CompareRate()
    {
        const auto wanted = Wanted().FindChild(IFormatCodecVideo::TAG_FPS);
        const auto found = m_record.FindChild(IFormatCodecVideo::TAG_FPS);
        if (m_file.isPicture || m_wanted.isCopied || !m_hasTimes || m_stream.isAttachedPicture ||
            wanted == Wanted().end() || found == m_record.end())
        {
            return;
        }
        constexpr double kRounding = 0.002;
        const double rate = RateOf(wanted->GetRatio());
        const std::optional<double> measured = MeasuredRate();
        const double perFrame = measured ? 1.5 / static_cast<double>(m_scan.packets) : 0;
        if (!IsNear(RateOf(found->GetRatio()), rate, kRounding) &&
            !(measured && IsNear(*measured, rate, kRounding + perFrame)) && !IsMergedGif(measured, rate))
        {
            Add("frame rate", DecimalText(rate), DecimalText(measured.value_or(RateOf(found->GetRatio()))));
        }
    }

    /// A GIF has fewer frames where images stay the same, and the rate of a single one is not kept.
    bool IsMergedGif(const std::optional<double>& measured, double rate) const
    {
        return m_stream.codec == avcodec_get_name(AV_CODEC_ID_GIF) && (!measured || *measured <= rate);
    }

    void CompareAudio()
    {
        CompareProfile();
        CompareLayout();
        const auto wanted = NumberUnder(Wanted(), IFormatCodecAudio::TAG_SAMPLE_RATE);
        const auto found = NumberUnder(m_record, IFormatCodecAudio::TAG_SAMPLE_RATE);
        // Opus decodes to 48 kHz, whatever it was made from.
        const bool isOpus = m_stream.codec == avcodec_get_name(AV_CODEC_ID_OPUS);
        if (wanted && found && *wanted != *found && !isOpus)
        {
            Add("sample rate", std::to_string(*wanted) + " Hz", std::to_string(*found) + " Hz");
        }
    }

    void CompareLayout()
    {
        const std::string wanted = TextUnder(Wanted(), IFormatCodecAudio::TAG_LAYOUT);
        const std::string found = TextUnder(m_record, IFormatCodecAudio::TAG_LAYOUT);
        if (wanted.empty() || found.empty() || wanted == found)
        {
            return;
        }
        const auto channels = [](const std::string& layout) {
            return Conf::LayoutRecord::Find(layout)->channels;
        };
        // Many codecs only count their channels, or do not tell the side from the back.
        if (channels(wanted) != channels(found))
        {
            Add("channel layout", wanted, found);
        }
    }

    void CompareDecoding()
    {
        if (!m_scan.error.empty())
        {
            Add("decoding", "no error", m_scan.error);
        }
        else if (m_scan.hasDecoder && m_scan.frames == 0 && m_wanted.kind != StreamKind::Subtitle)
        {
            Add("decoding", "frames", "none");
        }
    }

    const ExpectedFile& m_file;
    const ExpectedStream& m_wanted;
    const MediaStream& m_stream;
    const StreamScan& m_scan;
    const Property& m_record;
    bool m_hasTimes = false;
    std::vector<TargetDifference> m_differences;
};

} // namespace

std::vector<TargetDifference> CompareStream(const ExpectedFile& file, const ExpectedStream& wanted,
                                            const FoundStream& found)
{
    return Comparison(file, wanted, found).Find();
}

} // namespace Zelnor::Media
