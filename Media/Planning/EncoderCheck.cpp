#include "Media/Planning/EncoderCheck.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Jobs/JobKeys.h"
#include "Media/MediaException.h"
#include "Media/Planning/EncoderCapabilities.h"
#include "Media/Planning/VideoSettings.h"
#include "Media/ValueText.h"

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <climits>
#include <optional>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;

constexpr const char* kUnit = "Media/Planning/EncoderCheck";

constexpr long long kLongestSide = 65535;

/// Nothing when no format has that number.
const PixFmtDescription* FindPixelFormat(long long number)
{
    const auto& records = PixFmtDescription::s_pixelFormatRecords;
    const auto found = std::find_if(records.begin(), records.end(),
                                    [number](const auto& record) { return record.pixFmt == number; });
    return found == records.end() ? nullptr : &*found;
}

/// Gathers what one encoder does not support of one record.
class Check
{
public:
    Check(const Property& codec, const AVCodec& encoder) : m_codec(codec), m_encoder(encoder) {}

    std::vector<EncoderFault> Find()
    {
        if (m_encoder.type == AVMEDIA_TYPE_VIDEO)
        {
            CheckPixelFormat();
            CheckPixelFormatName();
            CheckInterlacing();
            CheckLength(IFormatCodecVideo::TAG_WIDTH);
            CheckLength(IFormatCodecVideo::TAG_HEIGHT);
            CheckFrameRate();
        }
        else if (m_encoder.type == AVMEDIA_TYPE_AUDIO)
        {
            CheckSampleFormat();
            CheckLayout();
            CheckSampleRate();
        }
        return std::move(m_faults);
    }

private:
    void Add(const std::string& key, const std::string& what)
    {
        m_faults.push_back({key, std::string("encoder ") + m_encoder.name + " does not support " + what});
    }

    /// The value under the key, if it is there and of the type; another type is a fault.
    const Property* Value(const std::string& key, PropertyTypes type)
    {
        const auto value = m_codec.FindChild(key);
        if (value == m_codec.end())
        {
            return nullptr;
        }
        if (value->GetType() != type)
        {
            m_faults.push_back(
                {key, std::string("expected ") + TypeText(type) + ", found " + ValueText(*value)});
            return nullptr;
        }
        return &*value;
    }

    void CheckPixelFormat()
    {
        const Property* const value = Value(Conf::TAG_PIX_FMT, PROPERTY_TYPE_INT64);
        if (value == nullptr || value->GetInt64() == PIX_FMT_NONE)
        {
            return;
        }
        const PixFmtDescription* const format = FindPixelFormat(value->GetInt64());
        if (format == nullptr)
        {
            Add(Conf::TAG_PIX_FMT, "pixel format number " + ValueText(*value));
        }
        else if (!Supports(m_encoder, format->pixFmt))
        {
            Add(Conf::TAG_PIX_FMT, "pixel format " + format->name);
        }
    }

    void CheckPixelFormatName()
    {
        const Property* const name = Value(JobKeys::kPixelFormat, PROPERTY_TYPE_STRING);
        if (name == nullptr)
        {
            return;
        }
        const AVPixelFormat format = av_get_pix_fmt(name->GetString().c_str());
        const auto number = m_codec.FindChild(Conf::TAG_PIX_FMT);
        if (!Supports(m_encoder, format))
        {
            Add(JobKeys::kPixelFormat, "pixel format " + name->GetString());
        }
        else if (number != m_codec.end() && number->GetType() == PROPERTY_TYPE_INT64 &&
                 ToFFmpeg(static_cast<PixFmt>(number->GetInt64())) != format)
        {
            m_faults.push_back({JobKeys::kPixelFormat, Conf::TAG_PIX_FMT + " asks for another pixel format"});
        }
    }

    void CheckInterlacing()
    {
        const Property* const word = Value(JobKeys::kDeinterlace, PROPERTY_TYPE_STRING);
        if (word != nullptr && DeinterlacingIn(m_codec) == Deinterlacing::Keep &&
            !SupportsInterlaced(m_encoder))
        {
            Add(JobKeys::kDeinterlace, "interlaced video");
        }
    }

    void CheckLength(const std::string& key)
    {
        const Property* const length = Value(key, PROPERTY_TYPE_INT64);
        if (length != nullptr && (length->GetInt64() < 1 || length->GetInt64() > kLongestSide))
        {
            Add(key, key + " " + ValueText(*length));
        }
    }

    void CheckFrameRate()
    {
        const Property* const value = Value(IFormatCodecVideo::TAG_FPS, PROPERTY_TYPE_RATIO);
        if (value == nullptr)
        {
            return;
        }
        const Property::Ratio& ratio = value->GetRatio();
        AVRational rate = {};
        const bool exact =
            av_reduce(&rate.num, &rate.den, ratio.numerator(), ratio.denominator(), INT_MAX) != 0;
        if (!exact || rate.num <= 0 || av_cmp_q(NearestFrameRate(m_encoder, rate), rate) != 0)
        {
            Add(IFormatCodecVideo::TAG_FPS, "frame rate " + ValueText(*value));
        }
    }

    template <class Record, class Member>
    void CheckRecord(const std::string& key, const std::string& what, Member member)
    {
        const Property* const value = Value(key, PROPERTY_TYPE_STRING);
        if (value == nullptr)
        {
            return;
        }
        try
        {
            if (!Supports(m_encoder, Record::Find(value->GetString())->*member))
            {
                Add(key, what + " " + value->GetString());
            }
        }
        catch (const Conf::FormatException&)
        {
            m_faults.push_back({key, "expected a " + what + ", found " + ValueText(*value)});
        }
    }

    void CheckSampleFormat()
    {
        CheckRecord<Conf::SampleFmtRecord>(IFormatCodecAudio::TAG_SAMPLE_FORMAT, "sample format",
                                           &Conf::SampleFmtRecord::format);
    }

    void CheckLayout()
    {
        CheckRecord<Conf::LayoutRecord>(IFormatCodecAudio::TAG_LAYOUT, "channel layout",
                                        &Conf::LayoutRecord::layout);
    }

    void CheckSampleRate()
    {
        const Property* const rate = Value(IFormatCodecAudio::TAG_SAMPLE_RATE, PROPERTY_TYPE_INT64);
        if (rate != nullptr && (rate->GetInt64() < 1 || rate->GetInt64() > INT_MAX ||
                                !SupportsSampleRate(m_encoder, static_cast<int>(rate->GetInt64()))))
        {
            Add(IFormatCodecAudio::TAG_SAMPLE_RATE, "sample rate " + ValueText(*rate));
        }
    }

    const Property& m_codec;
    const AVCodec& m_encoder;
    std::vector<EncoderFault> m_faults;
};

} // namespace

std::vector<EncoderFault> FindEncoderFaults(const Property& codec, const AVCodec& encoder)
{
    return Check(codec, encoder).Find();
}

void RequireAccepted(const Property& codec, const AVCodec& encoder, const Place& place)
{
    const std::vector<EncoderFault> faults = FindEncoderFaults(codec, encoder);
    if (!faults.empty())
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>(place.Under(faults.front().key), faults.front().reason));
    }
}

} // namespace Zelnor::Media
