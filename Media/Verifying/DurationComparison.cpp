#include "Media/Verifying/DurationComparison.h"

#include "Media/Verifying/Numbers.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace Zelnor::Media
{

namespace
{

constexpr std::int64_t kSecond = 1000000;

/// Of one frame of the record's rate; 0 when it has none.
std::int64_t FrameLength(const Core::Property& record)
{
    const auto rate = record.FindChild(Conf::IFormatCodecVideo::TAG_FPS);
    return rate != record.end() && rate->GetType() == PROPERTY_TYPE_RATIO && rate->GetRatio() > 0
               ? static_cast<std::int64_t>(static_cast<double>(kSecond) *
                                           static_cast<double>(rate->GetRatio().denominator()) /
                                           static_cast<double>(rate->GetRatio().numerator()))
               : 0;
}

/// By how much the lengths may differ: a frame on each side, the silent frame with which audio encoders begin
/// and the one that they fill up, and what containers round.
std::int64_t ToleranceOf(const ExpectedStream& wanted, const MediaStream& source, const StreamScan& found)
{
    constexpr std::int64_t kRounding = kSecond / 50;
    constexpr std::int64_t kAudioFrames = 3;
    const std::int64_t made = std::max(found.frameLength, FrameLength(wanted.record));
    return wanted.kind == StreamKind::Audio
               ? kAudioFrames * found.frameLength + 2 * kRounding
               : made + FrameLength(source.descriptor->GetProperty()) + kRounding;
}

/// \param longest  what there may be before the part
StreamScan WithoutLead(StreamScan found, std::int64_t wanted, std::int64_t longest)
{
    const std::int64_t lead = std::clamp<std::int64_t>(*found.Length() - wanted, 0, longest);
    found.end = *found.end - lead;
    return found;
}

} // namespace

std::optional<std::int64_t> DurationComparison::DeclaredLength(const ExpectedStream& wanted) const
{
    const MediaFile& file = m_file.sources[wanted.source];
    std::optional<std::int64_t> longest;
    for (const unsigned int index : wanted.streams)
    {
        const MediaStream& stream = file.streams[index];
        if (stream.kind == wanted.kind)
        {
            longest = std::max(longest, stream.duration ? stream.duration : file.duration);
        }
    }
    return m_file.span.DurationOf(longest);
}

std::int64_t DurationComparison::LongestLead(const ExpectedStream& wanted) const
{
    return wanted.isCopied ? m_file.span.start : 0;
}

std::vector<TargetDifference> DurationComparison::Compare(const ExpectedStream& wanted,
                                                          const MediaStream& stream, const StreamScan& found)
{
    const MediaStream& source = m_file.SourceOf(wanted);
    const bool isTimed = wanted.kind == StreamKind::Video || wanted.kind == StreamKind::Audio;
    if (!isTimed || m_file.isPicture || stream.isAttachedPicture || source.isAttachedPicture || !found.end)
    {
        return {};
    }
    const std::int64_t tolerance = ToleranceOf(wanted, source, found);
    const std::optional<std::int64_t> declared = DeclaredLength(wanted);
    return CompareLengths(wanted, found, declared, tolerance);
}

std::vector<TargetDifference> DurationComparison::CompareLengths(const ExpectedStream& wanted,
                                                                 const StreamScan& found,
                                                                 std::optional<std::int64_t> declared,
                                                                 std::int64_t tolerance)
{
    if (declared && !m_file.sources[wanted.source].durationIsEstimated)
    {
        const StreamScan part = WithoutLead(found, *declared, LongestLead(wanted));
        if (std::abs(*declared - *part.end) <= tolerance || std::abs(*declared - *part.Length()) <= tolerance)
        {
            return {};
        }
    }
    return CompareMeasured(wanted, found, tolerance);
}

std::vector<TargetDifference> DurationComparison::CompareMeasured(const ExpectedStream& wanted,
                                                                  const StreamScan& whole,
                                                                  std::int64_t tolerance)
{
    const MediaScan& scan = Measured(wanted.source);
    std::int64_t end = 0;
    std::int64_t length = 0;
    for (const unsigned int index : wanted.streams)
    {
        const bool isOfKind = m_file.sources[wanted.source].streams[index].kind == wanted.kind;
        if (isOfKind && index < scan.streams.size() && scan.streams[index].end)
        {
            end = std::max(end, *m_file.span.DurationOf(scan.streams[index].end));
            length = std::max(length, *m_file.span.DurationOf(scan.streams[index].Length()));
            tolerance = std::max(tolerance, tolerance + scan.streams[index].frameLength);
        }
    }
    const StreamScan found = WithoutLead(whole, length, LongestLead(wanted));
    std::vector<TargetDifference> differences;
    const auto isNear = [tolerance](std::int64_t one, std::int64_t other) {
        return std::abs(one - other) <= tolerance;
    };
    // A stream that begins later than its file may keep its pause or lose it.
    if (end != 0 && !isNear(*found.end, end) && !isNear(*found.Length(), length) &&
        !isNear(*found.Length(), end) && !isNear(*found.end, length))
    {
        differences.push_back({wanted.place, "duration", SecondsText(end), SecondsText(*found.end)});
    }
    if (auto cut = FindCut(wanted))
    {
        differences.push_back(std::move(*cut));
    }
    return differences;
}

const MediaScan& DurationComparison::Measured(std::size_t source)
{
    const auto [entry, isNew] = m_measured.try_emplace(source);
    if (isNew)
    {
        entry->second = MeasurePackets(m_file.sources[source].name, m_isCancelled);
    }
    return entry->second;
}

std::optional<TargetDifference> DurationComparison::FindCut(const ExpectedStream& wanted)
{
    const MediaFile& file = m_file.sources[wanted.source];
    const MediaScan& scan = Measured(wanted.source);
    if (!file.duration || file.durationIsEstimated || scan.isCancelled)
    {
        return std::nullopt;
    }
    std::int64_t end = 0;
    std::int64_t frame = 0;
    for (const StreamScan& stream : scan.streams)
    {
        end = std::max(end, stream.end.value_or(0));
        frame = std::max(frame, stream.frameLength);
    }
    constexpr std::int64_t kRounding = kSecond / 4;
    const std::int64_t missing = *file.duration - end;
    if (missing <= frame + kRounding)
    {
        return std::nullopt;
    }
    return TargetDifference{wanted.place, "source '" + file.name + "'", SecondsText(*file.duration),
                            SecondsText(end) + ", it is cut"};
}

} // namespace Zelnor::Media
