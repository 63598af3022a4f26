#include "Media/Options/SettingRules.h"

#include "Media/Jobs/JobKeys.h"
#include "Media/NearestNames.h"
#include "Media/Options/ColorNames.h"
#include "Media/Options/ValueNames.h"
#include "Media/Text.h"
#include "Media/ValueText.h"

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"
#include "Core/Interfaces/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <set>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecSubtitle;
using Conf::IFormatCodecVideo;
using Core::Property;

constexpr const char* kNulReason = "a text with a NUL byte cannot be given to ffmpeg";

bool IsNumber(const Property& value) { return value.GetType() == PROPERTY_TYPE_INT64; }
bool IsText(const Property& value) { return value.GetType() == PROPERTY_TYPE_STRING; }
bool IsGroup(const Property& value) { return value.GetType() == PROPERTY_TYPE_GROUP; }
bool IsScalar(const Property& value)
{
    return IsNumber(value) || IsText(value) || value.GetType() == PROPERTY_TYPE_RATIO;
}
bool IsNumberOrText(const Property& value) { return IsNumber(value) || IsText(value); }
bool IsAnything(const Property&) { return true; }

template <long long Least, long long Most>
bool IsBetween(const Property& value)
{
    return IsNumber(value) && value.GetInt64() >= Least && value.GetInt64() <= Most;
}

/// ffmpeg takes what it can from numbers that do not fit, and reads four bytes of whatever text.
bool IsTag(const Property& value)
{
    constexpr std::size_t kLength = 4;
    const auto isPrintable = [](char c) { return c >= 0x20 && c < 0x7F; };
    return IsBetween<0, 4294967295>(value) ||
           (IsText(value) && value.GetString().size() == kLength &&
            std::all_of(value.GetString().begin(), value.GetString().end(), isPrintable));
}

bool IsPixelFormat(const Property& value)
{
    const auto& records = PixFmtDescription::s_pixelFormatRecords;
    return IsNumber(value) && std::any_of(records.begin(), records.end(), [&value](const auto& record) {
               return record.pixFmt == value.GetInt64();
           });
}

bool IsFrameRate(const Property& value)
{
    constexpr long long kMost = std::numeric_limits<std::int32_t>::max();
    return value.GetType() == PROPERTY_TYPE_RATIO && value.GetRatio().numerator() > 0 &&
           value.GetRatio().numerator() <= kMost && value.GetRatio().denominator() <= kMost;
}

bool IsBitrateMode(const Property& value)
{
    return IsText(value) && (value.GetString() == IFormatCodec::TAG_BITRATE_MODE_CBR ||
                             value.GetString() == IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO ||
                             value.GetString() == IFormatCodec::TAG_BITRATE_MODE_VBR);
}

bool IsPassMode(const Property& value)
{
    return IsNumber(value) || (IsText(value) && (value.GetString() == IFormatCodec::TAG_ONE_PASS_MODE ||
                                                 value.GetString() == IFormatCodec::TAG_TWO_PASS_MODE));
}

/// -1 leaves it to the encoder. What else a text may be, the encoder's option says.
bool IsCount(const Property& value)
{
    switch (value.GetType())
    {
    case PROPERTY_TYPE_INT64:
        return value.GetInt64() >= -1;
    case PROPERTY_TYPE_RATIO:
        return value.GetRatio() >= -1;
    case PROPERTY_TYPE_STRING:
        return value.GetString().substr(0, 1) != "-" || value.GetString() == "-1";
    case PROPERTY_TYPE_NONE:
    case PROPERTY_TYPE_GROUP:
        break;
    }
    return false;
}

bool IsThreadNumber(const Property& value)
{
    return IsBetween<0, 2147483647>(value) || (IsText(value) && value.GetString() == "auto");
}

template <class Record>
bool HasRecord(const Property& value)
{
    try
    {
        return IsText(value) && Record::Find(value.GetString()) != nullptr;
    }
    catch (const Conf::FormatException&)
    {
        return false;
    }
}

bool IsSampleFormat(const Property& value)
{
    return HasRecord<Conf::SampleFmtRecord>(value) &&
           Conf::SampleFmtRecord::Find(value.GetString())->format != Conf::SAMPLE_FMT_NONE;
}

bool IsDeinterlacing(const Property& value)
{
    const std::string word = IsText(value) ? value.GetString() : "";
    return word == JobKeys::kDeinterlaceOff || word == JobKeys::kDeinterlaceEveryFrame ||
           word == JobKeys::kDeinterlaceEveryField || word == JobKeys::kDeinterlaceKeep;
}

template <bool (*IsName)(const std::string&)>
bool IsNameOf(const Property& value)
{
    return IsText(value) && IsName(value.GetString());
}

/// What a value must be, and how people call that.
struct Rule
{
    bool (*accepts)(const Property& value);
    const char* expected;
};

constexpr Rule kAnything = {IsAnything, "anything"};
constexpr Rule kNumber = {IsNumber, "an integer"};
constexpr Rule kText = {IsText, "a string"};
constexpr Rule kGroup = {IsGroup, "a group"};
constexpr Rule kScalar = {IsScalar, "an integer, a string or a rational"};
constexpr Rule kNumberOrText = {IsNumberOrText, "an integer or a string"};
/// As FFmpeg's options are: of 32 bits.
constexpr Rule kPositive = {IsBetween<1, 2147483647>, "an integer from 1 to 2147483647"};
constexpr Rule kCount = {IsCount, "a number from -1 on"};
constexpr Rule kQuality = {IsBetween<0, IFormatCodec::MAX_QUALITY>, "an integer from 0 to 32"};
constexpr Rule kThreads = {IsThreadNumber, "an integer from 0 to 2147483647, or auto"};
constexpr Rule kLength = {IsBetween<1, 65535>, "an integer from 1 to 65535"};
/// 0:1 says that the aspect is not known.
constexpr Rule kAspectX = {IsBetween<0, 4294967295>, "an integer from 0 to 4294967295"};
constexpr Rule kAspectY = {IsBetween<1, 4294967295>, "an integer from 1 to 4294967295"};
constexpr Rule kFrameRate = {IsFrameRate, "a positive rational as 30000/1001"};
constexpr Rule kBitrateMode = {IsBitrateMode, "CBR, CBR_AUTO or VBR"};
constexpr Rule kTag = {IsTag, "four printable characters or an integer from 0 to 4294967295"};
constexpr Rule kPassMode = {IsPassMode, "an integer, one_pass or two_pass"};
constexpr Rule kPixelFormat = {IsPixelFormat, "the number of a pixel format"};
constexpr Rule kPixelFormatName = {IsNameOf<IsPixelFormatName>,
                                   "FFmpeg's name of a pixel format as yuv420p10le"};
constexpr Rule kDeinterlacing = {IsDeinterlacing, "off, 25p, 50p or keep"};
constexpr Rule kColorRange = {IsNameOf<IsColorRange>, "tv or pc"};
constexpr Rule kColorMatrix = {IsNameOf<IsColorMatrix>, "FFmpeg's name of a colour matrix as bt709"};
constexpr Rule kColorPrimaries = {IsNameOf<IsColorPrimaries>, "FFmpeg's name of colour primaries as bt709"};
constexpr Rule kColorTransfer = {IsNameOf<IsColorTransfer>, "FFmpeg's name of a colour transfer as bt709"};
constexpr Rule kSampleFormat = {IsSampleFormat, "a sample format as SAMPLE_FMT_S16"};
constexpr Rule kLayout = {HasRecord<Conf::LayoutRecord>, "a channel layout as STEREO"};

struct Row
{
    const std::string* key;
    Rule rule;
    bool isForCopies = false;
};

const std::vector<Row>& Rows()
{
    static const std::string s_pixelFormat = JobKeys::kPixelFormat;
    static const std::string s_deinterlace = JobKeys::kDeinterlace;
    static const std::string s_colorRange = JobKeys::kColorRange;
    static const std::string s_colorMatrix = JobKeys::kColorMatrix;
    static const std::string s_colorPrimaries = JobKeys::kColorPrimaries;
    static const std::string s_colorTransfer = JobKeys::kColorTransfer;
    static const std::vector<Row> s_rows = {
        {&IFormat::TAG_METADATA, kGroup, true},
        {&IFormatCodec::TAG_LANGUAGE, kText, true},
        {&IFormatCodec::TAG_NAME, kText},
        {&IFormatCodec::TAG_CODEC_ID, kText},
        {&IFormatCodec::TAG_LOSSLESS, kNumber},
        {&IFormatCodec::TAG_PREFERREDIMPL, kText},
        {&IFormatCodec::TAG_MULTIPASS_ENCODING, kPassMode},
        {&IFormatCodec::TAG_BITRATE, kPositive},
        {&IFormatCodec::TAG_BITRATE_MODE, kBitrateMode},
        {&IFormatCodec::TAG_PEAK_BITRATE, kPositive},
        {&IFormatCodec::TAG_PEAK_BUFFER, kPositive},
        {&IFormatCodec::TAG_QUALITY, kQuality},
        {&IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE, kGroup, true},
        {&IFormatCodec::TAG_CODEC_OPTIONS_ENCODE, kGroup},
        {&IFormatCodec::TAG_PROFILE, kText},
        {&IFormatCodec::TAG_PRESET, kText},
        {&IFormatCodec::TAG_FOURCC, kTag},
        {&IFormatCodec::TAG_THREAD_NUMBER, kThreads},
        {&IFormatCodec::TAG_UTILIZE_ALL_RESOURCES, kNumber},
        {&IFormatCodec::TAG_GLOBAL_HEADER, kNumber},
        {&IFormatCodec::TAG_MAIN_STREAM, kNumber},
        {&IFormatCodecVideo::TAG_WIDTH, kLength},
        {&IFormatCodecVideo::TAG_HEIGHT, kLength},
        {&IFormatCodecVideo::TAG_ASPECTX, kAspectX},
        {&IFormatCodecVideo::TAG_ASPECTY, kAspectY},
        {&IFormatCodecVideo::TAG_FRAME_ASPECTX, kAspectX},
        {&IFormatCodecVideo::TAG_FRAME_ASPECTY, kAspectX},
        {&IFormatCodecVideo::TAG_FPS, kFrameRate},
        {&IFormatCodecVideo::TAG_IMAGE_FLAG, kAnything},
        {&IFormatCodecVideo::TAG_X264_TUNE, kText},
        {&IFormatCodecVideo::TAG_KEY_ONLY, kNumber},
        {&IFormatCodecVideo::TAG_MAX_B_FRAME_SEQUENCE, kCount},
        {&IFormatCodecVideo::TAG_MAX_I_FRAME_INTERVAL, kCount},
        {&IFormatCodecVideo::TAG_MOTION_SRCH_RNG, kCount},
        {&IFormatCodecVideo::TAG_X264_SLICE_MAX_SIZE, kCount},
        {&IFormatCodecVideo::TAG_X264_OPTS, kText},
        {&IFormatCodecVideo::TAG_DPI, kCount},
        {&Conf::TAG_PIX_FMT, kPixelFormat},
        {&s_pixelFormat, kPixelFormatName},
        {&s_deinterlace, kDeinterlacing},
        {&s_colorRange, kColorRange},
        {&s_colorMatrix, kColorMatrix},
        {&s_colorPrimaries, kColorPrimaries},
        {&s_colorTransfer, kColorTransfer},
        {&IFormatCodecAudio::TAG_SAMPLE_RATE, kPositive},
        {&IFormatCodecAudio::TAG_SAMPLE_FORMAT, kSampleFormat},
        {&IFormatCodecAudio::TAG_LAYOUT, kLayout},
        {&IFormatCodecAudio::TAG_FRAME_SIZE, kAnything},
        {&IFormatCodecSubtitle::TAG_CHARSET_ENCODING, kAnything},
    };
    return s_rows;
}

const Row* FindRow(const std::string& key)
{
    const auto found =
        std::find_if(Rows().begin(), Rows().end(), [&key](const Row& row) { return *row.key == key; });
    return found == Rows().end() ? nullptr : &*found;
}

/// Why the value is not as the rule says; empty when it is.
std::string FindFault(const Property& value, const Rule& rule)
{
    if (!rule.accepts(value))
    {
        return std::string("expected ") + rule.expected + ", found " + ValueText(value) + SuggestName(value);
    }
    return IsText(value) && HasNul(value.GetString()) ? kNulReason : "";
}

/// Whether ffmpeg takes the name of a tag as it is, with its value after an equals sign.
bool IsTagName(std::string_view name)
{
    if (name.empty())
    {
        return false;
    }
    while (!name.empty())
    {
        const std::size_t length = Core::Utf8Length(name);
        if (length == 0 || name.front() == '=' ||
            Core::IsInvisibleControl(Core::Utf8CodePoint(name.substr(0, length))))
        {
            return false;
        }
        name.remove_prefix(length);
    }
    return true;
}

std::string FaultOfName(const Property& group, const Property& child)
{
    if (HasNul(child.GetName()))
    {
        return kNulReason;
    }
    return group.GetName() == IFormat::TAG_METADATA && !IsTagName(child.GetName())
               ? "the name of a tag is a visible text without '='"
               : "";
}

const Rule& RuleOfChildren(const Property& group)
{
    return group.GetName() == IFormat::TAG_METADATA                     ? kAnything
           : group.GetName() == IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE ? kNumberOrText
                                                                        : kScalar;
}

} // namespace

bool IsSettingKnown(const std::string& key) { return FindRow(key) != nullptr; }

std::vector<std::string> KnownSettings()
{
    std::vector<std::string> known;
    for (const Row& row : Rows())
    {
        known.push_back(*row.key);
    }
    return known;
}

std::string ExpectedOfSetting(const std::string& key)
{
    const Row* const row = FindRow(key);
    return row == nullptr ? "" : row->rule.expected;
}

std::string UnknownSettingText(const std::string& key)
{
    return "unknown setting '" + key + "'" + DidYouMean(key, KnownSettings());
}

bool IsSettingForCopies(const std::string& key)
{
    const Row* const row = FindRow(key);
    return row != nullptr && row->isForCopies;
}

std::string FindSettingFault(const Property& setting)
{
    const Row* const row = FindRow(setting.GetName());
    return row == nullptr ? "" : FindFault(setting, row->rule);
}

std::vector<ChildFault> FindChildFaults(const Property& group)
{
    std::vector<ChildFault> faults;
    std::set<std::string> seen;
    const bool isMetadata = group.GetName() == IFormat::TAG_METADATA;
    for (const Property& child : group)
    {
        // FFmpeg does not tell tags apart by upper and lower case.
        const bool isNew = seen.insert(isMetadata ? LowerCase(child.GetName()) : child.GetName()).second;
        std::string fault = FaultOfName(group, child);
        fault = !fault.empty() ? fault : !isNew ? kRepeatedText : FindFault(child, RuleOfChildren(group));
        if (!fault.empty())
        {
            faults.push_back({&child, std::move(fault)});
        }
    }
    return faults;
}

bool HasNul(const std::string& text) { return text.find('\0') != std::string::npos; }

} // namespace Zelnor::Media
