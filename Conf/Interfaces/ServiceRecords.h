#pragma once

#include "Core/Interfaces/Export.h"

#include <cstdint>
#include <string>

namespace Zelnor::Conf
{

/// Audio sample formats, with FFmpeg's values.
enum SampleFormats : std::int32_t
{
// SAMPLE_FMT_NONE = -1, SAMPLE_FMT_U8 = 0, SAMPLE_FMT_S16 = 1, ..., SAMPLE_FMT_DBLP = 9
#define ZELNOR_SAMPLE_FORMAT(name, value, bitsPerSample, planar, counterpart) name = (value),
#include "Conf/Interfaces/Vocabulary/SampleFormats.def"
};

/// Channel layouts, numbered from 0. Two names differ from FFmpeg's: CH_LAYOUT_5POINT1 is FFmpeg's
/// "5.1(side)", and CH_LAYOUT_5POINT1_BACK is its "5.1".
enum ChannelLayout : std::int32_t
{
// CH_LAYOUT_UNKNOWN = 0, CH_LAYOUT_MONO = 1, CH_LAYOUT_STEREO = 2, ..., CH_LAYOUT_STEREO_DOWNMIX = 27
#define ZELNOR_LAYOUT(name, enumerator, text, channels) enumerator,
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
};

/// Describes a sample format. The library owns the records, which are never destroyed; no pointer to one is
/// null.
struct ZELNOR_API SampleFmtRecord
{
    SampleFormats format;      ///< its value
    int bitsPerSample;         ///< of one channel
    std::string textId;        ///< as stored in records: "SAMPLE_FMT_S16"
    bool planar;               ///< whether each channel has a plane of its own
    SampleFormats counterpart; ///< the planar format of a packed one, and vice versa

    /// \throw FormatException "Provided sample format is not found in list"; SAMPLE_FMT_NONE has a record
    static const SampleFmtRecord* Find(SampleFormats format);
    /// \throw FormatException "Provided sample textId is not found in list"; texts are case-sensitive
    static const SampleFmtRecord* Find(const std::string& textId);
};

/// Describes a channel layout. The library owns the records, which are never destroyed; no pointer to one is
/// null.
struct ZELNOR_API LayoutRecord
{
    ChannelLayout layout; ///< its value
    int channels;         ///< how many there are
    const std::string*
        textId; ///< one of `IFormatCodecAudio::TAG_CH_LAYOUT_...`, as stored in records: "STEREO"

    /// \throw FormatException "Provided ChannelLayout is not found in list"; CH_LAYOUT_UNKNOWN has a record
    static const LayoutRecord* Find(ChannelLayout layout);
    /// \throw FormatException "Provided Channel TextID is not found in list"; texts are case-sensitive
    static const LayoutRecord* Find(const std::string& textId);
    /// The first layout with that number of channels: 4 finds CH_LAYOUT_3POINT1, not CH_LAYOUT_QUAD.
    /// \throw FormatException "Provided number of channels is not found in list"
    static const LayoutRecord* Find(int channels);
};

/// Sample format, rate and channel layout of an audio stream. The pointers are never null.
struct ZELNOR_API SampleInfo
{
    int sampleRate = -1;                 ///< samples per second; -1: not set
    const SampleFmtRecord* sampleFormat; ///< the record of SAMPLE_FMT_NONE: not set
    const LayoutRecord* channelLayout;   ///< the record of CH_LAYOUT_UNKNOWN: not set

    /// Makes an info in which nothing is set.
    SampleInfo();

    /// Sets all three; the rate is not checked.
    ///
    /// \throw FormatException when the format or the layout does not have a record; the format is checked
    /// first, and
    ///   nothing is changed
    void Init(SampleFormats format, int rate, ChannelLayout layout);
    /// Replaces each of the three values that is not set by that of `defaults`. A rate of 0 counts as set.
    void ReplaceDefaultsForm(const SampleInfo& defaults); // kept: "Form"
};

} // namespace Zelnor::Conf
