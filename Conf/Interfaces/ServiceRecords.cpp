#include "Conf/Interfaces/ServiceRecords.h"

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Core/Private/Early.h"

#include <cstddef>
#include <iterator>
#include <string>
#include <type_traits>

namespace Zelnor::Conf
{

namespace
{

constexpr const char* kUnit = "Conf/Interfaces/ServiceRecords";

} // namespace

namespace details
{

ZELNOR_EARLY const SampleFmtRecord s_sampleFormatRecords[] = {
#define ZELNOR_SAMPLE_FORMAT(name, value, bitsPerSample, planar, counterpart)                                \
    {name, bitsPerSample, #name, planar, counterpart},
#include "Conf/Interfaces/Vocabulary/SampleFormats.def"
};
static_assert(std::size(s_sampleFormatRecords) == 11);

/// Constant-initialised, so that it can be read before the texts are constructed.
constexpr LayoutRecord s_layoutRecords[] = {
#define ZELNOR_LAYOUT(name, enumerator, text, channels) {enumerator, channels, &IFormatCodecAudio::name},
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
};
static_assert(std::size(s_layoutRecords) == 28);

/// Whether a member of a record, or what it points to, is what is sought. Has a name, since the exceptions
/// below tell it: of a lambda, that is the path of the source on the building machine.
template <auto member, class Value>
struct Is
{
    template <class Record>
    bool operator()(const Record& record) const
    {
        if constexpr (std::is_pointer_v<std::decay_t<decltype(record.*member)>>)
        {
            return *(record.*member) == wanted;
        }
        else
        {
            return record.*member == wanted;
        }
    }

    const Value& wanted;
};

/// The first of `count` records that `match` accepts.
/// \throw FormatException with `message` as description when there is none
/// kept: the unused flag, because every exception that is thrown here records the signature
template <class T, class Functor>
static const T* FindRecord(const T* records, std::size_t count, const Functor& match, bool,
                           const char* message)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        if (match(records[i]))
        {
            return records + i;
        }
    }
    // The line is part of the contract with the product's error reports.
    ZELNOR_THROW_AT_LINE(kUnit, 68, FormatException() << TagDescription(message));
}

} // namespace details

const SampleFmtRecord* SampleFmtRecord::Find(SampleFormats format)
{
    return details::FindRecord(details::s_sampleFormatRecords, std::size(details::s_sampleFormatRecords),
                               details::Is<&SampleFmtRecord::format, SampleFormats>{format}, true,
                               "Provided sample format is not found in list");
}

const SampleFmtRecord* SampleFmtRecord::Find(const std::string& textId)
{
    return details::FindRecord(details::s_sampleFormatRecords, std::size(details::s_sampleFormatRecords),
                               details::Is<&SampleFmtRecord::textId, std::string>{textId}, true,
                               "Provided sample textId is not found in list");
}

const LayoutRecord* LayoutRecord::Find(ChannelLayout layout)
{
    return details::FindRecord(details::s_layoutRecords, std::size(details::s_layoutRecords),
                               details::Is<&LayoutRecord::layout, ChannelLayout>{layout}, true,
                               "Provided ChannelLayout is not found in list");
}

const LayoutRecord* LayoutRecord::Find(const std::string& textId)
{
    return details::FindRecord(details::s_layoutRecords, std::size(details::s_layoutRecords),
                               details::Is<&LayoutRecord::textId, std::string>{textId}, true,
                               "Provided Channel TextID is not found in list");
}

const LayoutRecord* LayoutRecord::Find(int channels)
{
    return details::FindRecord(details::s_layoutRecords, std::size(details::s_layoutRecords),
                               details::Is<&LayoutRecord::channels, int>{channels}, true,
                               "Provided number of channels is not found in list");
}

// By address instead of `Find`, so that an info can be made before the records' texts are constructed.
SampleInfo::SampleInfo()
    : sampleFormat(&details::s_sampleFormatRecords[0]), channelLayout(&details::s_layoutRecords[0])
{}

void SampleInfo::Init(SampleFormats format, int rate, ChannelLayout layout)
{
    const SampleFmtRecord* const formatRecord = SampleFmtRecord::Find(format);
    const LayoutRecord* const layoutRecord = LayoutRecord::Find(layout);
    sampleFormat = formatRecord;
    channelLayout = layoutRecord;
    sampleRate = rate;
}

void SampleInfo::ReplaceDefaultsForm(const SampleInfo& defaults)
{
    if (sampleFormat->format == SAMPLE_FMT_NONE)
    {
        sampleFormat = defaults.sampleFormat;
    }
    if (channelLayout->layout == CH_LAYOUT_UNKNOWN)
    {
        channelLayout = defaults.channelLayout;
    }
    if (sampleRate == -1)
    {
        sampleRate = defaults.sampleRate;
    }
}

} // namespace Zelnor::Conf
