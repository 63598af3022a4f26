#pragma once

// Private to the library, not installed.

#include "Media/Verifying/ExpectedFile.h"
#include "Media/Verifying/MediaScan.h"
#include "Media/Verifying/Verification.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Compares how long the streams of a finished file last with how long their sources do. What a source says
/// of itself is believed when the finished file is as long; else the source's packets are read, and a source
/// that ends before it says is named.
class DurationComparison
{
public:
    DurationComparison(const ExpectedFile& file, const std::function<bool()>& isCancelled)
        : m_file(file), m_isCancelled(isCancelled)
    {}

    std::vector<TargetDifference> Compare(const ExpectedStream& wanted, const MediaStream& stream,
                                          const StreamScan& found);

private:
    /// Of the part of the source that is converted.
    std::optional<std::int64_t> DeclaredLength(const ExpectedStream& wanted) const;
    /// A copy begins at the key frame before its part, which may be as early as its source.
    std::int64_t LongestLead(const ExpectedStream& wanted) const;
    std::vector<TargetDifference> CompareLengths(const ExpectedStream& wanted, const StreamScan& found,
                                                 std::optional<std::int64_t> declared,
                                                 std::int64_t tolerance);
    std::vector<TargetDifference> CompareMeasured(const ExpectedStream& wanted, const StreamScan& whole,
                                                  std::int64_t tolerance);
    const MediaScan& Measured(std::size_t source);
    /// Nothing when it is whole, or does not say how long it is.
    std::optional<TargetDifference> FindCut(const ExpectedStream& wanted);

    const ExpectedFile& m_file;
    const std::function<bool()>& m_isCancelled;
    std::map<std::size_t, MediaScan> m_measured;
};

} // namespace Zelnor::Media
