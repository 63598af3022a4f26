#pragma once

#include "Core/Interfaces/Export.h"

#include <cstdint>
#include <string>

namespace Zelnor::Conf
{

/// Audio sample formats, in FFmpeg's numbers.
enum SampleFormats : std::int32_t
{
// SAMPLE_FMT_NONE = -1, SAMPLE_FMT_U8 = 0, SAMPLE_FMT_S16 = 1, ..., SAMPLE_FMT_DBLP = 9
#define ZELNOR_SAMPLE_FORMAT(name, value, bitsPerSample, planar, counterpart) name = (value),
#include "Conf/Interfaces/Vocabulary/SampleFormats.def"
};

/// Channel layouts, numbered from 0. Two of the names are not FFmpeg's: CH_LAYOUT_5POINT1 is its "5.1(side)"
/// and CH_LAYOUT_5POINT1_BACK its "5.1".
enum ChannelLayout : std::int32_t
{
// CH_LAYOUT_UNKNOWN = 0, CH_LAYOUT_MONO = 1, CH_LAYOUT_STEREO = 2, ..., CH_LAYOUT_STEREO_DOWNMIX = 27
#define ZELNOR_LAYOUT(name, enumerator, text, channels) enumerator,
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
};

/// What a sample format is. Records belong to the library and stay; pointers to them are never null.
struct ZELNOR_API SampleFmtRecord
{
    SampleFormats format;
    int bitsPerSample;
    std::string textId; ///< as persisted: "SAMPLE_FMT_S16"
    bool planar;
    SampleFormats counterpart; ///< the same samples, packed instead of planar or the other way round

    /// \throw FormatException "Provided sample format is not found in list"; SAMPLE_FMT_NONE has a record
    static const SampleFmtRecord* Find(SampleFormats format);
    /// \throw FormatException "Provided sample textId is not found in list"; texts are case-sensitive
    static const SampleFmtRecord* Find(const std::string& textId);
};

/// What a channel layout is. Records belong to the library and stay; pointers to them are never null.
struct ZELNOR_API LayoutRecord
{
    ChannelLayout layout;
    int channels;
    const std::string* textId; ///< one of `IFormatCodecAudio::TAG_CH_LAYOUT_...`, as persisted: "STEREO"

    /// \throw FormatException "Provided ChannelLayout is not found in list"; CH_LAYOUT_UNKNOWN has a record
    static const LayoutRecord* Find(ChannelLayout layout);
    /// \throw FormatException "Provided Channel TextID is not found in list"; texts are case-sensitive
    static const LayoutRecord* Find(const std::string& textId);
    /// The first layout with so many channels: 4 finds CH_LAYOUT_3POINT1, not CH_LAYOUT_QUAD.
    /// \throw FormatException "Provided number of channels is not found in list"
    static const LayoutRecord* Find(int channels);
};

/// Sample format, rate and channel layout of an audio stream. The pointers are never null.
struct ZELNOR_API SampleInfo
{
    int sampleRate = -1;                 ///< samples per second; -1: not set
    const SampleFmtRecord* sampleFormat; ///< the record of SAMPLE_FMT_NONE: not set
    const LayoutRecord* channelLayout;   ///< the record of CH_LAYOUT_UNKNOWN: not set

    /// Nothing is set.
    SampleInfo();

    /// Sets all three; the rate is not checked.
    ///
    /// \throw FormatException when the format or the layout has no record, the format being looked up first;
    ///        nothing is changed then
    void Init(SampleFormats format, int rate, ChannelLayout layout);
    /// Takes from `defaults` what is not set here, each of the three by itself. A rate of 0 is set.
    void ReplaceDefaultsForm(const SampleInfo& defaults); // kept: "Form"
};

} // namespace Zelnor::Conf
