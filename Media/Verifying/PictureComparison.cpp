#include "Media/Verifying/PictureComparison.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Planning/ColorPlan.h"
#include "Media/Planning/VideoSettings.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/RecordText.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <string>
#include <utility>

namespace Zelnor::Media
{

namespace
{

/// Of most videos: the samples do not use all values.
constexpr const char* kUsualRange = "tv";

constexpr const char* kProgressive = "progressive";

/// The name of the format whose range is said elsewhere: "yuv420p" for "yuvj420p".
std::string WithoutRange(const std::string& name)
{
    const std::string prefix = "yuvj";
    return name.rfind(prefix, 0) == 0 ? "yuv" + name.substr(prefix.size()) : name;
}

/// The format with the transparency that VP8 and VP9 have beside the stream. A tag tells it, and not every
/// decoder looks at it. Empty: there is none.
std::string WithAlphaBeside(const MediaStream& found)
{
    const std::string prefix = "yuv";
    const bool isBeside = TextUnder(found.descriptor->GetMetadata(), "alpha_mode") == "1" &&
                          found.pixelFormat.rfind(prefix, 0) == 0;
    return isBeside ? "yuva" + found.pixelFormat.substr(prefix.size()) : "";
}

/// FFmpeg's name of the pixel format that a record asks for; empty when it leaves it open.
std::string PixelsOf(const Core::Property& record)
{
    const char* const name = av_get_pix_fmt_name(PixelFormatIn(record));
    return name == nullptr ? "" : name;
}

std::string OrderOf(const MediaStream& interlaced)
{
    return interlaced.fieldOrder.empty() ? "interlaced" : interlaced.fieldOrder;
}

/// Compares the frames of one video.
class FrameComparison
{
public:
    FrameComparison(const ExpectedFile& file, const ExpectedStream& wanted, const MediaStream& found)
        : m_container(file.container), m_wanted(wanted),
          m_source(file.sources.empty() ? nullptr : &file.SourceOf(wanted)), m_found(found)
    {
        const AVCodecDescriptor* const codec = avcodec_descriptor_get_by_name(found.codec.c_str());
        m_codec = codec == nullptr ? AV_CODEC_ID_NONE : codec->id;
    }

    std::vector<TargetDifference> Find()
    {
        ComparePixels();
        CompareFields();
        CompareColors();
        return std::move(m_differences);
    }

private:
    void Add(const std::string& what, const std::string& wanted, const std::string& found)
    {
        m_differences.push_back({m_wanted.place, what, wanted, found});
    }

    bool IsCopyOfKnown() const { return m_wanted.isCopied && m_source != nullptr; }

    void ComparePixels()
    {
        const std::string wanted = IsCopyOfKnown() ? m_source->pixelFormat : PixelsOf(m_wanted.record);
        // A GIF has a palette, and is decoded without it.
        if (!wanted.empty() && !m_found.pixelFormat.empty() && m_codec != AV_CODEC_ID_GIF &&
            WithoutRange(wanted) != WithoutRange(m_found.pixelFormat) && wanted != WithAlphaBeside(m_found))
        {
            Add("pixel format", wanted, m_found.pixelFormat);
        }
    }

    void CompareFields()
    {
        const Deinterlacing deinterlacing = DeinterlacingIn(m_wanted.record);
        // DV says that it is interlaced, whatever it is.
        if (m_wanted.isCopied || deinterlacing == Deinterlacing::Off || m_codec == AV_CODEC_ID_DVVIDEO)
        {
            return;
        }
        const bool isKept =
            deinterlacing == Deinterlacing::Keep && m_source != nullptr && m_source->isInterlaced;
        if (!isKept && m_found.isInterlaced)
        {
            Add("field order", kProgressive, OrderOf(m_found));
        }
        else if (isKept && m_found.fieldOrder == kProgressive)
        {
            Add("field order", OrderOf(*m_source), m_found.fieldOrder);
        }
        // Which field is coded first may change; of which one is shown first, the first letter is what
        // FFmpeg's encoders and muxers agree on.
        else if (isKept && m_found.isInterlaced && !m_source->fieldOrder.empty() &&
                 !m_found.fieldOrder.empty() && ParityOf(*m_source) != ParityOf(m_found))
        {
            Add("field order", OrderOf(*m_source), m_found.fieldOrder);
        }
    }

    void CompareColors()
    {
        const VideoColor wanted = IsCopyOfKnown() ? m_source->color : ColorIn(m_wanted.record);
        const VideoColor& found = m_found.color;
        if (TellsColor(m_codec, m_container))
        {
            CompareColor("colour matrix", wanted.matrix, found.matrix);
            CompareColor("colour primaries", wanted.primaries, found.primaries);
            CompareColor("colour transfer", wanted.transfer, found.transfer);
        }
        // PNG has full range only, and its decoder says so of grey images alone.
        if (TellsRange(m_codec, m_container) && m_codec != AV_CODEC_ID_PNG)
        {
            CompareColor("colour range", wanted.range, found.range);
        }
    }

    /// A copy may have had its colours from its container alone, and a file that does not tell the range has
    /// the usual one.
    void CompareColor(const char* what, const std::string& wanted, const std::string& found)
    {
        const bool mayBeUntold = m_wanted.isCopied || wanted == kUsualRange;
        if (!wanted.empty() && wanted != found && !(found.empty() && mayBeUntold))
        {
            Add(what, wanted, found.empty() ? "none" : found);
        }
    }

    const std::string& m_container;
    const ExpectedStream& m_wanted;
    const MediaStream* m_source; ///< null when it is not known
    const MediaStream& m_found;
    AVCodecID m_codec = AV_CODEC_ID_NONE;
    std::vector<TargetDifference> m_differences;
};

} // namespace

std::vector<TargetDifference> ComparePicture(const ExpectedFile& file, const ExpectedStream& wanted,
                                             const MediaStream& found)
{
    return FrameComparison(file, wanted, found).Find();
}

} // namespace Zelnor::Media
