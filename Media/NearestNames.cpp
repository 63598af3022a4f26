#include "Media/NearestNames.h"

#include "Media/Text.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string_view>
#include <utility>

namespace Zelnor::Media
{

namespace
{

constexpr std::array<std::string_view, 6> kPrefixes = {"codec_id_", "av_codec_id_", "sample_fmt_",
                                                       "pix_fmt_",  "ch_layout_",   "format_"};
constexpr std::size_t kMostSuggestions = 3;
/// A longer name is not a misspelt known name, and comparing it would take long.
constexpr std::size_t kLongestName = 64;

/// How many letters must be added, removed, replaced, or swapped with their neighbour to turn `a` into `b`.
std::size_t Distance(const std::string& a, const std::string& b)
{
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        beforeLast.swap(last);
        last.swap(row);
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j)
        {
            row[j + 1] = std::min({row[j] + 1, last[j + 1] + 1, last[j] + (a[i] == b[j] ? 0 : 1)});
            if (i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j])
            {
                row[j + 1] = std::min(row[j + 1], beforeLast[j - 1] + 1);
            }
        }
    }
    return row.back();
}

/// How much `known` differs from `meant`. Above `limit` they are not alike.
std::size_t Strangeness(const std::string& meant, const std::string& known, std::size_t limit)
{
    const bool contains = meant.size() >= 3 && known.find(meant) != std::string::npos;
    return contains ? std::min(limit, Distance(meant, known)) : Distance(meant, known);
}

} // namespace

std::string BareName(const std::string& name)
{
    const std::string lower = LowerCase(name);
    for (const std::string_view prefix : kPrefixes)
    {
        if (lower.size() > prefix.size() && lower.compare(0, prefix.size(), prefix) == 0)
        {
            return lower.substr(prefix.size());
        }
    }
    return lower;
}

std::vector<std::string> NearestNames(const std::string& name, const std::vector<std::string>& known)
{
    const std::string meant = BareName(name);
    if (meant.empty() || meant.size() > kLongestName)
    {
        return {};
    }
    // At least two unless that is most of the name, so that two letters may be swapped.
    const std::size_t limit = meant.size() < 4 ? 1 : std::max<std::size_t>(2, meant.size() / 3);
    std::vector<std::pair<std::size_t, std::string>> candidates;
    for (const std::string& candidate : known)
    {
        const std::size_t strangeness = Strangeness(meant, BareName(candidate), limit);
        if (strangeness <= limit)
        {
            candidates.emplace_back(strangeness, candidate);
        }
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> names;
    for (const auto& [strangeness, candidate] : candidates)
    {
        if (names.size() < kMostSuggestions &&
            std::find(names.begin(), names.end(), candidate) == names.end())
        {
            names.push_back(candidate);
        }
    }
    return names;
}

std::string DidYouMean(const std::string& name, const std::vector<std::string>& known)
{
    return DidYouMean(NearestNames(name, known));
}

std::string DidYouMean(const std::vector<std::string>& names)
{
    std::string question;
    for (const std::string& name : names)
    {
        question += (question.empty() ? "; did you mean '" : " or '") + name + "'";
    }
    return question + (question.empty() ? "" : "?");
}

} // namespace Zelnor::Media
