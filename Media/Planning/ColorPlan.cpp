#include "Media/Planning/ColorPlan.h"

#include "Media/Planning/Containers.h"
#include "Media/Planning/VideoSettings.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"

#include <algorithm>
#include <array>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodecVideo;
using Conf::IFormatFile;
using Core::Property;

template <class T, std::size_t Count>
bool IsIn(const std::array<T, Count>& known, const T& value)
{
    return std::find(known.begin(), known.end(), value) != known.end();
}

/// Their files have a place of their own for colours, whatever the codec.
bool ContainerTellsColor(const std::string& container)
{
    static const std::array<std::string, 9> s_containers = {IFormatFile::FORMAT_MOV,
                                                            IFormatFile::FORMAT_MP4,
                                                            IFormatFile::FORMAT_M4A,
                                                            IFormatFile::FORMAT_3GP,
                                                            IFormatFile::FORMAT_3G2,
                                                            IFormatFile::FORMAT_MATROSKA,
                                                            IFormatFile::FORMAT_WEBM,
                                                            "mxf",
                                                            "f4v"};
    return IsIn(s_containers, container);
}

std::uint32_t NumberIn(const Property& record, const std::string& key)
{
    const auto child = record.FindChild(key);
    return child == record.end() ? 0 : static_cast<std::uint32_t>(child->GetInt64());
}

std::string OrUnknown(const std::string& name) { return name.empty() ? "unknown" : name; }

class Plan
{
public:
    Plan(const MediaStream& source, const AVCodec& encoder, const std::string& container,
         const Property& record)
        : m_source(source), m_container(container), m_sourceFormat(PixelFormatOf(source)),
          m_format(PixelFormatIn(record)), m_tellsColor(TellsColor(encoder.id, container)),
          m_tellsRange(TellsRange(encoder.id, container)),
          m_usualMatrix(UsualMatrix(NumberIn(record, IFormatCodecVideo::TAG_WIDTH),
                                    NumberIn(record, IFormatCodecVideo::TAG_HEIGHT)))
    {}

    bool IsToneMapped() const
    {
        constexpr int kHdrDepth = 10;
        return IsHdr(m_source.color.transfer) && !(m_tellsColor && DepthOf(m_format) >= kHdrDepth);
    }

    VideoColor Make() const
    {
        if (IsToneMapped())
        {
            const bool isRgb = IsRgb(m_format);
            return {isRgb ? "" : Range(),
                    isRgb                ? ""
                    : IsDvd(m_container) ? m_usualMatrix
                                         : "bt709",
                    "bt709", "bt709"};
        }
        VideoColor color;
        if (!IsRgb(m_format))
        {
            color.range = Range();
            color.matrix = Matrix();
        }
        if (m_tellsColor)
        {
            color.primaries = m_source.color.primaries;
            color.transfer = m_source.color.transfer;
        }
        return color;
    }

    /// Whether viewers will see other colours, because the file cannot say which ones they are.
    bool IsLost() const
    {
        const VideoColor& color = m_source.color;
        const auto isUsual = [](const std::string& name) {
            static const std::array<std::string, 6> s_usual = {"",          "bt709",        "bt470bg",
                                                               "smpte170m", "iec61966-2-1", "bt2020-10"};
            return IsIn(s_usual, name);
        };
        return !m_tellsColor && !(isUsual(color.primaries) && isUsual(color.transfer));
    }

private:
    /// The source's, known or not.
    std::string SourceMatrix() const
    {
        const Conf::FrameInfo frame =
            dynamic_cast<const IFormatCodecVideo&>(*m_source.descriptor).GetFrameInfo();
        return m_source.color.matrix.empty() ? UsualMatrix(frame.width, frame.height) : m_source.color.matrix;
    }

    std::string Matrix() const
    {
        if (m_sourceFormat == AV_PIX_FMT_NONE)
        {
            return "";
        }
        if (IsRgb(m_sourceFormat))
        {
            return m_usualMatrix;
        }
        if (m_tellsColor && !IsDvd(m_container))
        {
            return m_source.color.matrix;
        }
        // A matrix that is not told must be the one that players expect. Those of DVDs do not read it.
        return !IsSameMatrix(SourceMatrix(), m_usualMatrix)     ? m_usualMatrix
               : m_tellsColor && !m_source.color.matrix.empty() ? m_usualMatrix
                                                                : "";
    }

    std::string Range() const
    {
        const bool isFull = m_source.color.range == "pc" || IsFullRange(m_sourceFormat);
        if (IsFullRange(m_format))
        {
            return "pc";
        }
        if (IsRgb(m_sourceFormat))
        {
            return "tv";
        }
        // The format of the same samples without the word for their range is the usual one.
        const bool canStay = m_tellsRange && !IsFullRange(m_sourceFormat);
        return isFull ? (canStay ? "pc" : "tv") : m_tellsRange ? m_source.color.range : "";
    }

    const MediaStream& m_source;
    const std::string& m_container;
    AVPixelFormat m_sourceFormat;
    AVPixelFormat m_format;
    bool m_tellsColor;
    bool m_tellsRange;
    std::string m_usualMatrix;
};

} // namespace

bool TellsColor(AVCodecID codec, const std::string& container)
{
    constexpr std::array<AVCodecID, 5> kCodecs = {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC, AV_CODEC_ID_AV1,
                                                  AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_PRORES};
    return ContainerTellsColor(container) || IsIn(kCodecs, codec);
}

bool TellsRange(AVCodecID codec, const std::string& container)
{
    constexpr std::array<AVCodecID, 5> kCodecs = {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC, AV_CODEC_ID_AV1,
                                                  AV_CODEC_ID_VP9, AV_CODEC_ID_MJPEG};
    // QuickTime's list of colours does not have a range, and MPEG-2 has one only.
    return (ContainerTellsColor(container) && container != IFormatFile::FORMAT_MOV &&
            codec != AV_CODEC_ID_MPEG2VIDEO) ||
           IsIn(kCodecs, codec);
}

void PlanColor(const MediaStream& source, const AVCodec& encoder, const std::string& container,
               Property& record)
{
    const VideoColor wanted = ColorIn(record);
    SetColor(Plan(source, encoder, container, record).Make(), record);
    // What is asked for wins.
    SetColor(wanted, record);
}

std::vector<std::string> ColorLosses(const MediaStream& source, const Property& record,
                                     const AVCodec& encoder, const std::string& container)
{
    std::vector<std::string> losses;
    const VideoColor& color = source.color;
    const std::string target = ColorIn(record).transfer;
    // Without a word, the samples stay what they are.
    if (IsHdr(color.transfer) && !target.empty() && !IsHdr(target))
    {
        losses.push_back("its high dynamic range (" + color.transfer +
                         ") is mapped to standard dynamic range (" + target + ")");
    }
    else if (Plan(source, encoder, container, record).IsLost())
    {
        losses.push_back("its colours (primaries " + OrUnknown(color.primaries) + ", transfer " +
                         OrUnknown(color.transfer) +
                         ") cannot be named in the output, so players will show others");
    }
    if (!source.hdr.dolbyVision.empty())
    {
        losses.push_back("its Dolby Vision data (profile " + source.hdr.dolbyVision + ") are left out");
    }
    return losses;
}

} // namespace Zelnor::Media
