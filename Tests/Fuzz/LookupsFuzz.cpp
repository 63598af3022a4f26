// Any text and any number in the look-ups of the vocabulary: a value that leads back to itself, or the
// exception that the look-up promises.

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/MediaTypeUtils.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"
#include "Tests/Fuzz/Bytes.h"
#include "Tests/Fuzz/Fuzzer.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Conf;
using Fuzz::Require;

/// Whether the look-up found something; anything but an `E` passes through and ends the process.
template <class E, class Action>
bool Finds(Action&& action)
{
    try
    {
        action();
        return true;
    }
    catch (const E& e)
    {
        Require(std::strlen(e.what()) != 0, "an exception has a message");
        return false;
    }
}

void LookUpCodec(const std::string& text)
{
    bool isKnown = false;
    for (const MapCodecs* const map :
         {&mapVideoCodecs, &mapAudioCodecs, &mapSubtitleCodecs, &mapUnknownCodecs})
    {
        isKnown |= Finds<FormatException>([&] {
            const AVCodecID id = AVCodecIDFromTextID(text, *map);
            Require(AVCodecIDToTextID(id, *map) == text, "a codec leads back to its text");
        });
    }
    const bool isInAll = Finds<FormatException>([&] {
        Require(CodecIDFromTextID(CodecIDToTextID(CodecIDFromTextID(text))) == CodecIDFromTextID(text),
                "a codec's text leads back to it");
    });
    Require(isInAll || !isKnown || text == IFormatCodec::CODEC_ID_NONE, "all codecs are in the whole map");
    const std::optional<Zelnor::MediaType> type = GetCodecMediaType(text);
    Require(!Finds<FormatException>([&] { IsAudioBitrateRequired(text); }) ||
                text == IFormatCodec::CODEC_ID_NONE || type == MEDIA_TYPE_AUDIO,
            "only audio needs a bitrate of audio");
    Require(!IsExternalDecoder(text) || IsExternalEncoder(text), "one list for both directions");
}

void LookUpFormats(const std::string& text)
{
    Finds<std::logic_error>([&] {
        Require(PixFmtDescription::Find(text)->name == text, "a pixel format has its name");
        const PixFmt format = PixFmtDescription::Find(text)->pixFmt;
        Require(PixFmtDescription::Find(format)->pixFmt == format, "a pixel format leads back to itself");
    });
    Finds<FormatException>([&] {
        const SampleFmtRecord* const record = SampleFmtRecord::Find(text);
        Require(SampleFmtRecord::Find(record->format)->textId == text,
                "a sample format leads back to its text");
    });
    Finds<FormatException>([&] {
        const LayoutRecord* const record = LayoutRecord::Find(text);
        Require(*LayoutRecord::Find(record->layout)->textId == text, "a layout leads back to its text");
    });
}

void LookUpContainer(const std::string& text)
{
    const bool isKnown = IsContainer(text);
    Require(isKnown || (!IsImageContainer(text) && !IsAudioContainer(text)),
            "a container of a kind is known");
    Finds<std::invalid_argument>([&] { GetDefaultFileExtensionForContainer(text); });
    const bool isGroup = Finds<std::invalid_argument>(
        [&] { Require(!GetSupportedFormatExtensions(text).empty(), "a group has extensions"); });
    Require(isGroup || GetFormatExtentionTip(text).empty(), "only groups have hints");
    Require(!CanCopyWithEncryption(text) || CanReadWithEncryption(text), "what is copied is read");
    Finds<std::logic_error>([&] {
        const Zelnor::MediaType type = IPreset::MediaTypeFromPresetStreamType(text);
        const std::string first = IPreset::PresetStreamTypeFormMediaType(type);
        Require(IPreset::MediaTypeFromPresetStreamType(first) == type,
                "a stream type leads back to its kind");
    });
}

void LookUpNumber(int number, const std::string& text)
{
    Finds<std::logic_error>([&] {
        const PixFmtDescription* const found = PixFmtDescription::Find(static_cast<PixFmt>(number));
        Require(found->pixFmt == number, "a pixel format has its number");
        found->MakeColor(static_cast<Color>(number));
    });
    Finds<FormatException>([&] {
        const auto format = static_cast<SampleFormats>(number);
        Require(SampleFmtRecord::Find(format)->format == format, "a sample format has its number");
    });
    Finds<FormatException>([&] {
        const auto layout = static_cast<ChannelLayout>(number);
        Require(LayoutRecord::Find(layout)->layout == layout, "a layout has its number");
    });
    Finds<FormatException>(
        [&] { Require(LayoutRecord::Find(number)->channels == number, "a layout has its channels"); });
    // The enumeration of FFmpeg has no more bits.
    Finds<FormatException>([&] { CodecIDToTextID(static_cast<AVCodecID>(number & 0xFFFF)); });
    Finds<std::logic_error>(
        [&] { IPreset::PresetStreamTypeFormMediaType(static_cast<Zelnor::MediaType>(number)); });
    const auto accelerator = static_cast<IFormatCodecVideo::AcceleratorType>(number % 8);
    std::vector<std::string> codecs;
    Finds<std::out_of_range>([&] { IFormatCodecVideo::GetAcceleratedEncoder(accelerator, text); });
    Finds<std::out_of_range>([&] { IFormatCodecVideo::GetAcceleratedDecoder(accelerator, text); });
    Finds<std::out_of_range>([&] { IFormatCodecVideo::GetAcceleratedEncoderCodecs(accelerator, codecs); });
    Finds<std::out_of_range>([&] { IFormatCodecVideo::GetAcceleratedDecoderCodecs(accelerator, codecs); });
}

void Calculate(const std::string& text, long long a, long long b, int c)
{
    const double fps = static_cast<double>(a) / (static_cast<double>(b) + 0.5);
    GetDefVideoBitrate(text, a, b, fps);
    GetDefVideoBitrate(text, a, b, std::numeric_limits<double>::quiet_NaN());
    GetMinVideoBitrate(text, b, a, std::numeric_limits<double>::infinity(), c);
    GetMaxVideoBitrate(text, b, a, -fps, c);
    NormBitrate(a, c);
    const auto x = static_cast<std::uint32_t>(a);
    const auto y = static_cast<std::uint32_t>(b);
    const auto video = IFormatCodecVideo::Create();
    video->InitByFrameAspect(x, y, static_cast<std::uint32_t>(c), x);
    video->InitByPixelAspect(x, y, y, static_cast<std::uint32_t>(c));
    video->GetFrameAspectX();
    video->GetFrameAspect();
    Finds<boost::bad_rational>([&] { video->SetFrameRate(x, y); });
    Core::Property record("format_codec_video", a);
    record = Core::Property("format_codec_video");
    record.SetChildT(IFormatCodec::TAG_BITRATE_MODE, c % 2 == 0 ? text : IFormatCodec::TAG_BITRATE_MODE_VBR);
    record.SetChildT(IFormatCodec::TAG_BITRATE, a);
    record.SetChildT(IFormatCodec::TAG_QUALITY, static_cast<long long>(c));
    Finds<std::exception>([&] { GetMinBitrate(record); });
    Finds<std::exception>([&] { GetMaxBitrate(record); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text = Fuzz::ToString(data, size);
    LookUpCodec(text);
    LookUpFormats(text);
    LookUpContainer(text);
    Fuzz::Bytes bytes(text);
    const long long a = bytes.Number();
    const long long b = bytes.Number();
    const int c = static_cast<int>(bytes.Number());
    LookUpNumber(c, text);
    LookUpNumber(bytes.Byte(), text);
    Calculate(text, a, b, c);
    return 0;
}
